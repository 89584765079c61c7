#include "mesh.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "heat_error.h"

namespace heat {
namespace {

double SixfoldVolume(const Mesh& mesh, const std::array<int, 4>& corners) {
    const auto at = [&](int i) -> const Point& {
        return mesh.points[static_cast<std::size_t>(corners[static_cast<std::size_t>(i)])];
    };
    return Dot(Difference(at(1), at(0)), Cross(Difference(at(2), at(0)), Difference(at(3), at(0))));
}

double LongestEdge(const Mesh& mesh, const std::array<int, 4>& corners) {
    double longest = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t k = 0; k < i; ++k) {
            const Point edge = Difference(mesh.points[static_cast<std::size_t>(corners[i])],
                                          mesh.points[static_cast<std::size_t>(corners[k])]);
            longest = std::max(longest, Dot(edge, edge));
        }
    }
    return std::sqrt(longest);
}

// Turns every element to positive volume.
void Orient(Mesh& mesh, const cow_String& name) {
    for (std::array<int, 4>& corners : mesh.elements) {
        const double volume = SixfoldVolume(mesh, corners);
        const double edge = LongestEdge(mesh, corners);
        if (!(std::fabs(volume) > 1e-12 * edge * edge * edge)) {
            throw HeatError(Text("'", name, "' has a tetrahedron without volume, at node ",
                                 mesh.labels[static_cast<std::size_t>(corners[0])]));
        }
        if (volume < 0) std::swap(corners[2], corners[3]);
    }
}

// A triangle is on the surface if it belongs to one element only.
void FindSurface(Mesh& mesh) {
    struct Triangle {
        std::array<int, 3> sorted;
        std::array<int, 3> seen;
    };
    constexpr std::size_t kFaces[4][3] = {{1, 2, 3}, {0, 3, 2}, {0, 1, 3}, {0, 2, 1}};
    std::vector<Triangle> triangles;
    triangles.reserve(4 * mesh.elements.size());
    for (const std::array<int, 4>& corners : mesh.elements) {
        for (const auto& face : kFaces) {
            Triangle triangle;
            triangle.seen = {corners[face[0]], corners[face[1]], corners[face[2]]};
            triangle.sorted = triangle.seen;
            std::sort(triangle.sorted.begin(), triangle.sorted.end());
            triangles.push_back(triangle);
        }
    }
    std::sort(triangles.begin(), triangles.end(),
              [](const Triangle& a, const Triangle& b) { return a.sorted < b.sorted; });
    for (std::size_t i = 0; i < triangles.size();) {
        std::size_t next = i + 1;
        while (next < triangles.size() && triangles[next].sorted == triangles[i].sorted) ++next;
        if (next == i + 1) mesh.surface.push_back(triangles[i].seen);
        i = next;
    }
}

}  // namespace

Mesh BuildMesh(const Part& part, RowTable& rows, TableClock& clock) {
    Mesh mesh;
    NodeSet used;
    std::vector<std::size_t> places;  // of the used nodes, in the order of their rows
    places.reserve(part.labels.size());
    int row = 0;
    clock.Time([&] {
        for (const int label : part.corners) used.SetBit(static_cast<unsigned>(label));
        for (std::size_t i = 0; i < part.labels.size(); ++i) {
            if (!used.IsSet(static_cast<unsigned>(part.labels[i]))) continue;
            rows.Insert(part.labels[i], row++);
            places.push_back(i);
        }
    });
    mesh.elements.resize(part.corners.size() / 4);
    const int* missing = nullptr;
    clock.Time([&] {
        const int* corner = part.corners.data();
        for (std::array<int, 4>& element : mesh.elements) {
            for (int& each : element) {
                if (!rows.ConstGetValue(*corner, each)) missing = corner;
                ++corner;
            }
        }
    });
    if (missing != nullptr) {
        throw HeatError(Text("'", part.name, "' has an element at a missing node ", *missing));
    }
    for (const std::size_t place : places) {
        const double* at = part.coordinates.data() + 3 * place;
        mesh.labels.push_back(part.labels[place]);
        mesh.points.push_back({at[0], at[1], at[2]});
    }
    Orient(mesh, part.name);
    FindSurface(mesh);
    return mesh;
}

}  // namespace heat
