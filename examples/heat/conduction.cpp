#include "conduction.h"

#include <algorithm>

namespace heat {
namespace {

constexpr double kMetresPerUnit = 1e-3;

std::size_t At(int i) { return static_cast<std::size_t>(i); }

}  // namespace

Conduction::Conduction(const Mesh& mesh, const Adjacency& elementsAt, double conductivity)
    : m_mesh(mesh),
      m_elementsAt(elementsAt),
      m_factor(conductivity * kMetresPerUnit),
      m_position(mesh.Nodes(), -1) {}

const std::vector<std::pair<int, double>>& Conduction::Row(int row) {
    constexpr std::size_t kOpposite[4][3] = {{1, 2, 3}, {0, 3, 2}, {0, 1, 3}, {0, 2, 1}};
    m_row.clear();
    const auto* link = m_elementsAt.GetFirst(m_mesh.labels[At(row)]);
    for (; link != nullptr; link = link->next) {
        const std::array<int, 4>& corners = m_mesh.elements[At(link->value)];
        Point points[4];
        for (std::size_t i = 0; i < 4; ++i) points[i] = m_mesh.PointAt(At(corners[i]));
        Point normals[4];  // twice the area of the face opposite to each corner
        std::size_t own = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const Point& origin = points[kOpposite[i][0]];
            normals[i] = Cross(Difference(points[kOpposite[i][1]], origin),
                               Difference(points[kOpposite[i][2]], origin));
            if (corners[i] == row) own = i;
        }
        const double sixfoldVolume = std::fabs(Dot(normals[0], Difference(points[0], points[1])));
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

System Assemble(Conduction& conduction, const Mesh& mesh, const BoundaryValues& held, double guess,
                Tables& tables, WorkArrays& arrays) {
    std::vector<int> unknownOf(mesh.Nodes());
    std::vector<double> prescribed(mesh.Nodes());
    tables.clock.Time([&] {
        for (const auto& [label, temperature] : held) {
            const int row = tables.rows.ConstGet(label);
            unknownOf[At(row)] = -1;
            prescribed[At(row)] = temperature;
        }
    });
    std::vector<int> rowOf;  // of each own unknown
    int count = 0;           // with those of the halo
    for (std::size_t row = 0; row < unknownOf.size(); ++row) {
        if (unknownOf[row] < 0) continue;
        unknownOf[row] = count++;
        if (row < mesh.own) rowOf.push_back(static_cast<int>(row));
    }
    const auto own = static_cast<Eigen::Index>(rowOf.size());

    std::vector<int> columns;  // grow; work arrays have one size
    std::vector<double> values;
    columns.reserve(16 * rowOf.size());
    values.reserve(16 * rowOf.size());
    int* const starts = arrays.New<int>("matrix row starts", rowOf.size() + 1);
    WorkArrays::Vector load = arrays.NewVector("right-hand side", own);
    for (std::size_t i = 0; i < rowOf.size(); ++i) {
        for (const auto& [column, value] : conduction.Row(rowOf[i])) {
            const int other = unknownOf[At(column)];
            if (other >= 0) {
                columns.push_back(other);
                values.push_back(value);
            } else {
                load[static_cast<Eigen::Index>(i)] -= value * prescribed[At(column)];
            }
        }
        starts[i + 1] = static_cast<int>(values.size());
    }
    const System::Matrix matrix(own, count, static_cast<Eigen::Index>(values.size()), starts,
                                arrays.NewCopy("matrix columns", columns),
                                arrays.NewCopy("matrix values", values));
    WorkArrays::Vector unknowns = arrays.NewVector("solution", count);
    unknowns.setConstant(guess);
    return {std::move(unknownOf), std::move(prescribed), matrix, load, unknowns};
}

}  // namespace heat
