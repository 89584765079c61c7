#include "conduction.h"

#include <omi/omi_BlkBitVectTrav.h>
#include <omi/omi_IntTableIterator.h>

#include <algorithm>

namespace heat {
namespace {

constexpr double kMetresPerUnit = 1e-3;

std::size_t At(int i) { return static_cast<std::size_t>(i); }

// The rows of the nodes of a set, in ascending order of their labels.
std::vector<int> RowsOf(const NodeSet& set, const RowTable& rows) {
    std::vector<int> found;
    omi_BlkBitVectTrav traversal(&set);
    unsigned label = 0;
    for (bool more = traversal.First(label); more; more = traversal.Next(label)) {
        int row = 0;
        rows.ConstGetValue(static_cast<int>(label), row);
        found.push_back(row);
    }
    return found;
}

}  // namespace

Conduction::Conduction(const Mesh& mesh, double conductivity)
    : m_mesh(mesh),
      m_factor(conductivity * kMetresPerUnit),
      m_first(mesh.points.size() + 1),
      m_elements(4 * mesh.elements.size()),
      m_position(mesh.points.size(), -1) {
    for (const auto& corners : mesh.elements) {
        for (const int corner : corners) ++m_first[At(corner) + 1];
    }
    for (std::size_t i = 1; i < m_first.size(); ++i) m_first[i] += m_first[i - 1];
    std::vector<int> next(m_first.begin(), m_first.end() - 1);
    for (std::size_t element = 0; element < mesh.elements.size(); ++element) {
        for (const int corner : mesh.elements[element]) {
            m_elements[At(next[At(corner)]++)] = static_cast<int>(element);
        }
    }
}

const std::vector<std::pair<int, double>>& Conduction::Row(int row) {
    constexpr std::size_t kOpposite[4][3] = {{1, 2, 3}, {0, 3, 2}, {0, 1, 3}, {0, 2, 1}};
    m_row.clear();
    for (int k = m_first[At(row)]; k < m_first[At(row) + 1]; ++k) {
        const std::array<int, 4>& corners = m_mesh.elements[At(m_elements[At(k)])];
        Point normals[4];  // twice the area of the face opposite to each corner
        std::size_t own = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const Point& origin = m_mesh.points[At(corners[kOpposite[i][0]])];
            normals[i] = Cross(Difference(m_mesh.points[At(corners[kOpposite[i][1]])], origin),
                               Difference(m_mesh.points[At(corners[kOpposite[i][2]])], origin));
            if (corners[i] == row) own = i;
        }
        const double sixfoldVolume = std::fabs(Dot(
            normals[0], Difference(m_mesh.points[At(corners[0])], m_mesh.points[At(corners[1])])));
        for (std::size_t i = 0; i < 4; ++i) {
            const double value = m_factor * Dot(normals[own], normals[i]) / (6 * sixfoldVolume);
            int& position = m_position[At(corners[i])];
            if (position < 0) {
                position = static_cast<int>(m_row.size());
                m_row.emplace_back(corners[i], value);
            } else {
                m_row[At(position)].second += value;
            }
        }
    }
    for (const auto& entry : m_row) m_position[At(entry.first)] = -1;
    std::sort(m_row.begin(), m_row.end());
    return m_row;
}

System Assemble(Conduction& conduction, const Mesh& mesh, const Ends& ends, const RowTable& rows,
                double hot, double cold, TableClock& clock) {
    System system;
    const std::size_t count = mesh.points.size();
    system.unknownOf.assign(count, 0);
    system.prescribed.assign(count, 0);
    clock.Time([&] {
        for (const int row : RowsOf(ends.hot, rows)) {
            system.unknownOf[At(row)] = -1;
            system.prescribed[At(row)] = hot;
        }
        for (const int row : RowsOf(ends.cold, rows)) {
            system.unknownOf[At(row)] = -1;
            system.prescribed[At(row)] = cold;
        }
    });
    int unknowns = 0;
    for (int& unknown : system.unknownOf) {
        if (unknown == 0) unknown = unknowns++;
    }
    system.matrix.resize(unknowns, unknowns);
    system.matrix.reserve(16 * static_cast<Eigen::Index>(unknowns));
    system.load = Eigen::VectorXd::Zero(unknowns);
    for (std::size_t row = 0; row < count; ++row) {
        const int unknown = system.unknownOf[row];
        if (unknown < 0) continue;
        system.matrix.startVec(unknown);
        for (const auto& [column, value] : conduction.Row(static_cast<int>(row))) {
            const int other = system.unknownOf[At(column)];
            if (other >= 0) {
                system.matrix.insertBack(unknown, other) = value;
            } else {
                system.load[unknown] -= value * system.prescribed[At(column)];
            }
        }
    }
    system.matrix.finalize();
    return system;
}

}  // namespace heat
