#pragma once
#include "mesh.h"

namespace heat {

inline constexpr char kHotEnd[] = "hot end";    // at the lowest coordinate
inline constexpr char kColdEnd[] = "cold end";  // at the highest coordinate

// The two ends of the part along its longest axis, as named sets of nodes.
struct Ends {
    int axis = 0;       // 0, 1, 2 for x, y, z
    double length = 0;  // of the part along it, mm
    NodeSets sets;
};

// On a CAD model an end is the face that reaches the extreme coordinate, which may be curved: of
// several, those that extend least along the axis, and none that reaches both ends. On a mesh it is
// the surface nodes within 2 % of the length. Throws HeatError where an end is empty, the ends
// meet, or no path through the material joins them.
Ends FindEnds(const Part& part, const Mesh& mesh, Tables& tables);

// What the two ends are held at, node by node.
BoundaryValues ValuesAt(const Ends& ends, double hot, double cold, TableClock& clock);

}  // namespace heat
