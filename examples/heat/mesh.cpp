#include "mesh.h"

#include <omi/omi_SparseSet.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "heat_error.h"

namespace heat {
namespace {

double SixfoldVolume(const Mesh& mesh, const std::array<int, 4>& corners) {
    const auto at = [&](std::size_t i) {
        return mesh.PointAt(static_cast<std::size_t>(corners[i]));
    };
    return Dot(Difference(at(1), at(0)), Cross(Difference(at(2), at(0)), Difference(at(3), at(0))));
}

double LongestEdge(const Mesh& mesh, const std::array<int, 4>& corners) {
    double longest = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t k = 0; k < i; ++k) {
            const Point edge = Difference(mesh.PointAt(static_cast<std::size_t>(corners[i])),
                                          mesh.PointAt(static_cast<std::size_t>(corners[k])));
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

// A triangle is on the surface if it belongs to one element only. Each is looked at from the node
// with its lowest row, at which all its elements are found.
void FindSurface(Mesh& mesh, const Adjacency& elementsAt) {
    struct Triangle {
        std::array<int, 3> sorted;
        std::array<int, 3> seen;
    };
    constexpr std::size_t kFaces[4][3] = {{1, 2, 3}, {0, 3, 2}, {0, 1, 3}, {0, 2, 1}};
    std::vector<Triangle> triangles;
    for (int row = 0; row < static_cast<int>(mesh.own); ++row) {
        triangles.clear();
        const auto* link = elementsAt.GetFirst(mesh.labels[static_cast<std::size_t>(row)]);
        for (; link != nullptr; link = link->next) {
            const auto& corners = mesh.elements[static_cast<std::size_t>(link->value)];
            for (const auto& face : kFaces) {
                Triangle triangle;
                triangle.seen = {corners[face[0]], corners[face[1]], corners[face[2]]};
                if (*std::min_element(triangle.seen.begin(), triangle.seen.end()) != row) continue;
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
}

// A node is in the halo of every rank that has a node in one of its elements.
void FindNeighbours(const Mesh& mesh, Tables& tables) {
    std::map<int, omi_SparseSet> sharedWith;
    for (const std::array<int, 4>& corners : mesh.elements) {
        for (const int theirs : corners) {
            if (mesh.IsOwn(theirs)) continue;
            omi_SparseSet& shared = sharedWith[tables.halo.ConstGet(mesh.LabelOf(theirs))];
            for (const int corner : corners) {
                if (mesh.IsOwn(corner)) shared.Insert(mesh.LabelOf(corner));
            }
        }
    }
    for (const auto& [rank, labels] : sharedWith) {
        tables.neighbours.Insert(rank, cow_List<int>(labels.begin(), labels.end()));
    }
}

}  // namespace

Mesh BuildMesh(const Part& part, Tables& tables) {
    Mesh mesh;
    LabelBits used;
    std::vector<std::size_t> places;  // of the used nodes, in the order of their rows
    places.reserve(part.labels.size());
    mesh.elements.resize(part.corners.size() / 4);
    const int* missing = nullptr;
    tables.clock.Time([&] {
        for (const int label : part.corners) used.SetBit(static_cast<unsigned>(label));
        for (std::size_t i = 0; i < part.labels.size(); ++i) {
            if (!used.IsSet(static_cast<unsigned>(part.labels[i]))) continue;
            tables.rows.Insert(part.labels[i], static_cast<int>(places.size()));
            places.push_back(i);
        }
        // From the last one back, since a multimap lists the newest value first.
        for (std::size_t element = mesh.elements.size(); element-- > 0;) {
            for (std::size_t i = 0; i < 4; ++i) {
                const int& corner = part.corners[4 * element + i];
                if (!tables.rows.ConstGetValue(corner, mesh.elements[element][i])) {
                    missing = &corner;
                }
                tables.elementsAt.Insert(corner, static_cast<int>(element));
            }
        }
    });
    if (missing != nullptr) {
        throw HeatError(Text("'", part.name, "' has an element at a missing node ", *missing));
    }
    mesh.own = places.size() - part.haloRanks.size();
    mesh.coordinates = cow_2DArray<double>(static_cast<int>(places.size()), 3, 0);
    double* at = &mesh.coordinates.Get(0, 0);
    for (const std::size_t place : places) {
        mesh.labels.push_back(part.labels[place]);
        at = std::copy_n(part.coordinates.data() + 3 * place, 3, at);
    }
    Orient(mesh, part.name);
    FindSurface(mesh, tables.elementsAt);
    tables.clock.Time([&] {
        for (std::size_t i = 0; i < part.haloRanks.size(); ++i) {
            tables.halo.Insert(mesh.labels[mesh.own + i], part.haloRanks[i]);
        }
        FindNeighbours(mesh, tables);
    });
    return mesh;
}

}  // namespace heat
