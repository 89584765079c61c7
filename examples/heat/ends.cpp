#include "ends.h"

#include <algorithm>
#include <numeric>

#include "heat_error.h"

namespace heat {
namespace {

constexpr double kFaceTolerance = 1e-3;  // of the length: how exactly a face reaches an end
constexpr double kMeshShare = 0.02;      // of the length: how deep an end of a mesh is

std::vector<int> LabelsOfFaces(const Part& part, int axis, double end, double otherEnd,
                               double tolerance) {
    const auto reaches = [&](const ModelFace& face, double coordinate) {
        return face.low[axis] <= coordinate + tolerance &&
               face.high[axis] >= coordinate - tolerance;
    };
    const auto extent = [&](const ModelFace& face) { return face.high[axis] - face.low[axis]; };
    std::vector<const ModelFace*> candidates;
    for (const ModelFace& face : part.faces) {
        if (reaches(face, end) && !reaches(face, otherEnd)) candidates.push_back(&face);
    }
    std::vector<int> labels;
    if (candidates.empty()) return labels;
    const double least = extent(**std::min_element(
        candidates.begin(), candidates.end(),
        [&](const ModelFace* a, const ModelFace* b) { return extent(*a) < extent(*b); }));
    for (const ModelFace* face : candidates) {
        if (extent(*face) > least + tolerance) continue;
        labels.insert(labels.end(), face->labels.begin(), face->labels.end());
    }
    return labels;
}

std::vector<int> LabelsOfSurface(const Mesh& mesh, int axis, double low, double high) {
    std::vector<int> labels;
    for (const std::array<int, 3>& triangle : mesh.surface) {
        for (const int row : triangle) {
            const auto i = static_cast<std::size_t>(row);
            const double at = mesh.points[i][static_cast<std::size_t>(axis)];
            if (at >= low && at <= high) labels.push_back(mesh.labels[i]);
        }
    }
    return labels;
}

// Pieces of the mesh that share nodes. A piece that no end touches would have no temperature, and
// without a piece that both touch no heat flows.
class Pieces {
public:
    explicit Pieces(const Mesh& mesh) : m_parent(mesh.points.size()) {
        std::iota(m_parent.begin(), m_parent.end(), 0);
        for (const std::array<int, 4>& corners : mesh.elements) {
            for (const int corner : corners) {
                m_parent[static_cast<std::size_t>(Root(corner))] = Root(corners[0]);
            }
        }
        m_touched.resize(mesh.points.size());
    }

    void Touch(int row, unsigned char end) {
        m_touched[static_cast<std::size_t>(Root(row))] |= end;
    }

    void Check(const cow_String& name) {
        bool isJoined = false;
        for (int row = 0; row < static_cast<int>(m_parent.size()); ++row) {
            const unsigned char touched = m_touched[static_cast<std::size_t>(Root(row))];
            if (touched == 0) {
                throw HeatError(Text("'", name, "' has a piece that touches neither end"));
            }
            isJoined = isJoined || touched == 3;
        }
        if (!isJoined) throw HeatError(Text("no material joins the two ends of '", name, "'"));
    }

private:
    int Root(int row) {
        auto i = static_cast<std::size_t>(row);
        while (m_parent[i] != static_cast<int>(i)) {
            m_parent[i] = m_parent[static_cast<std::size_t>(m_parent[i])];
            i = static_cast<std::size_t>(m_parent[i]);
        }
        return static_cast<int>(i);
    }

    std::vector<int> m_parent;
    std::vector<unsigned char> m_touched;
};

}  // namespace

Ends FindEnds(const Part& part, const Mesh& mesh, const RowTable& rows, TableClock& clock) {
    Ends ends;
    Point low = mesh.points[0];
    Point high = low;
    for (const Point& point : mesh.points) {
        for (std::size_t k = 0; k < 3; ++k) {
            low[k] = std::min(low[k], point[k]);
            high[k] = std::max(high[k], point[k]);
        }
    }
    const Point lengths = Difference(high, low);
    const auto axis = static_cast<std::size_t>(std::max_element(lengths.begin(), lengths.end()) -
                                               lengths.begin());
    ends.axis = static_cast<int>(axis);
    ends.length = lengths[axis];

    std::vector<int> hot, cold;
    if (part.isCad) {
        const double tolerance = kFaceTolerance * ends.length;
        hot = LabelsOfFaces(part, ends.axis, low[axis], high[axis], tolerance);
        cold = LabelsOfFaces(part, ends.axis, high[axis], low[axis], tolerance);
    } else {
        const double depth = kMeshShare * ends.length;
        hot = LabelsOfSurface(mesh, ends.axis, low[axis], low[axis] + depth);
        cold = LabelsOfSurface(mesh, ends.axis, high[axis] - depth, high[axis]);
    }
    std::vector<int> hotRows(hot.size(), -1);
    std::vector<int> coldRows(cold.size(), -1);
    bool overlap = false;
    clock.Time([&] {
        for (std::size_t i = 0; i < hot.size(); ++i) {
            if (rows.ConstGetValue(hot[i], hotRows[i])) {
                ends.hot.SetBit(static_cast<unsigned>(hot[i]));
            }
        }
        for (std::size_t i = 0; i < cold.size(); ++i) {
            if (rows.ConstGetValue(cold[i], coldRows[i])) {
                ends.cold.SetBit(static_cast<unsigned>(cold[i]));
            }
        }
        overlap = ends.hot.HasOverlap(ends.cold);
    });
    const char* const axisNames[] = {"x", "y", "z"};
    if (ends.hot.Size() == 0 || ends.cold.Size() == 0) {
        throw HeatError(Text("no face of '", part.name, "' forms an end along its longest axis, ",
                             axisNames[axis]));
    }
    if (overlap) throw HeatError(Text("the hot and the cold end of '", part.name, "' meet"));

    Pieces pieces(mesh);
    for (const int row : hotRows) {
        if (row >= 0) pieces.Touch(row, 1);
    }
    for (const int row : coldRows) {
        if (row >= 0) pieces.Touch(row, 2);
    }
    pieces.Check(part.name);
    return ends;
}

}  // namespace heat
