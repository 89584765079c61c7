#pragma once
#include <cow/cow_2DArray.h>

#include <array>
#include <vector>

#include "part.h"
#include "tables.h"

namespace heat {

using Point = std::array<double, 3>;

// The part's nodes and tetrahedra by matrix row: the nodes that tetrahedra use, counted from 0.
struct Mesh {
    std::vector<int> labels;
    cow_2DArray<double> coordinates{0, 0, 0};  // mm; x y z of each node
    std::vector<std::array<int, 4>> elements;  // rows of the corners
    std::vector<std::array<int, 3>> surface;   // rows of the outer triangles, seen counterclockwise

    std::size_t Nodes() const { return labels.size(); }
    Point PointAt(std::size_t row) const {
        const double* at = coordinates.begin() + 3 * row;
        return {at[0], at[1], at[2]};
    }
};

// Fills the tables of rows and of the elements at each node. Throws HeatError where an element has
// no volume or uses a node that is not there.
Mesh BuildMesh(const Part& part, Tables& tables);

struct Extent {
    Point low;
    Point high;
};
Extent ExtentOf(const Mesh& mesh);

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
