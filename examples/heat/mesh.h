#pragma once
#include <array>
#include <cstdint>
#include <vector>

#include "part.h"
#include "tables.h"

namespace heat {

using Point = std::array<double, 3>;

// The part's nodes and tetrahedra by matrix row: the nodes that tetrahedra use, counted from 0.
struct Mesh {
    std::vector<int> labels;
    std::vector<Point> points;                 // mm
    std::vector<std::array<int, 4>> elements;  // rows of the corners
    std::vector<std::array<int, 3>> surface;   // rows of the outer triangles, seen counterclockwise
};

// Fills the empty table rows with the row of each label in use. Throws HeatError where an element
// has no volume or uses a node that is not there.
Mesh BuildMesh(const Part& part, RowTable& rows, TableClock& clock);

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
