#pragma once
#include <cow/cow_2DArray.h>

#include <algorithm>
#include <array>
#include <vector>

#include "part.h"
#include "tables.h"

namespace heat {

using Point = std::array<double, 3>;

// The part's nodes and tetrahedra by matrix row: the nodes that tetrahedra use, counted from 0. Of
// a share, the rank's own nodes come first and those of its halo follow, rank by rank; tetrahedra
// and triangles are those that touch an own node.
struct Mesh {
    std::size_t own = 0;  // nodes of this rank
    std::vector<int> labels;
    cow_2DArray<double> coordinates{0, 0, 0};  // mm; x y z of each node
    std::vector<std::array<int, 4>> elements;  // rows of the corners
    std::vector<std::array<int, 3>> surface;   // rows of the outer triangles, seen counterclockwise

    std::size_t Nodes() const { return labels.size(); }
    bool IsOwn(int row) const { return static_cast<std::size_t>(row) < own; }
    int LabelOf(int row) const { return labels[static_cast<std::size_t>(row)]; }
    Point PointAt(std::size_t row) const {
        const double* at = coordinates.begin() + 3 * row;
        return {at[0], at[1], at[2]};
    }
};

// Fills all tables but that of the temperatures. Throws HeatError where an element has
// no volume or uses a node that is not there.
Mesh BuildMesh(const Part& part, Tables& tables);

struct Extent {
    Point low;
    Point high;
};
// Of the nodes of a mesh or of its skin.
template <class Nodes>
Extent ExtentOf(const Nodes& nodes) {
    Extent box{nodes.PointAt(0), nodes.PointAt(0)};
    for (std::size_t i = 1; i < nodes.Nodes(); ++i) {
        const Point point = nodes.PointAt(i);
        for (std::size_t k = 0; k < 3; ++k) {
            box.low[k] = std::min(box.low[k], point[k]);
            box.high[k] = std::max(box.high[k], point[k]);
        }
    }
    return box;
}

inline Point Difference(const Point& a, const Point& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Point Cross(const Point& a, const Point& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double Dot(const Point& a, const Point& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

}  // namespace heat
