#include "ends.h"

#include <omi/omi_SparseSet.h>

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
            const double at = mesh.PointAt(i)[static_cast<std::size_t>(axis)];
            if (at >= low && at <= high) labels.push_back(mesh.labels[i]);
        }
    }
    return labels;
}

// Pieces of the mesh that share nodes. A piece that no end touches would have no temperature, and
// without a piece that both touch no heat flows.
class Pieces {
public:
    explicit Pieces(const Mesh& mesh) : m_parent(mesh.Nodes()) {
        std::iota(m_parent.begin(), m_parent.end(), 0);
        for (const std::array<int, 4>& corners : mesh.elements) {
            for (const int corner : corners) {
                m_parent[static_cast<std::size_t>(Root(corner))] = Root(corners[0]);
            }
        }
        m_touched.resize(mesh.Nodes());
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

// Those of the labels that tetrahedra use. Labels come repeatedly: neighbouring triangles and faces
// share nodes.
omi_SparseSet NodesInUse(const std::vector<int>& labels, unsigned char end, Pieces& pieces,
                         Tables& tables) {
    omi_SparseSet nodes;
    std::vector<int> rows(labels.size(), -1);
    tables.clock.Time([&] {
        for (std::size_t i = 0; i < labels.size(); ++i) {
            if (tables.rows.ConstGetValue(labels[i], rows[i])) nodes.Insert(labels[i]);
        }
        nodes.MakeUnique();
    });
    for (const int row : rows) {
        if (row >= 0) pieces.Touch(row, end);
    }
    return nodes;
}

}  // namespace

Ends FindEnds(const Part& part, const Mesh& mesh, Tables& tables) {
    Ends ends;
    const auto [low, high] = ExtentOf(mesh);
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
    Pieces pieces(mesh);
    const omi_SparseSet hotNodes = NodesInUse(hot, 1, pieces, tables);
    const omi_SparseSet coldNodes = NodesInUse(cold, 2, pieces, tables);
    const char* const axisNames[] = {"x", "y", "z"};
    if (hotNodes.IsEmpty() || coldNodes.IsEmpty()) {
        throw HeatError(Text("no face of '", part.name, "' forms an end along its longest axis, ",
                             axisNames[axis]));
    }
    omi_SparseSet shared(hotNodes);
    shared &= coldNodes;
    if (!shared.IsEmpty()) {
        throw HeatError(Text("the hot and the cold end of '", part.name, "' meet"));
    }
    pieces.Check(part.name);
    tables.clock.Time([&] {
        ends.sets.Insert(kHotEnd, cow_List<int>(hotNodes.begin(), hotNodes.end()));
        ends.sets.Insert(kColdEnd, cow_List<int>(coldNodes.begin(), coldNodes.end()));
    });
    return ends;
}

BoundaryValues ValuesAt(const Ends& ends, double hot, double cold, TableClock& clock) {
    BoundaryValues values;
    clock.Time([&] {
        for (const int label : ends.sets.ConstGet(kHotEnd)) values.InsertUnlessMember(label, hot);
        for (const int label : ends.sets.ConstGet(kColdEnd)) values.InsertUnlessMember(label, cold);
    });
    return values;
}

}  // namespace heat
