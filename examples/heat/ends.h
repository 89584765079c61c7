#pragma once
#include "mesh.h"

namespace heat {

// The nodes held at a temperature, by label: the two ends of the part along its longest axis.
struct Ends {
    int axis = 0;       // 0, 1, 2 for x, y, z
    double length = 0;  // of the part along it, mm
    NodeSet hot;        // at the lowest coordinate
    NodeSet cold;       // at the highest coordinate
};

// On a CAD model an end is the face that reaches the extreme coordinate, which may be curved: of
// several, those that extend least along the axis, and none that reaches both ends. On a mesh it is
// the surface nodes within 2 % of the length. Throws HeatError where an end is empty, the ends
// meet, or no path through the material joins them.
Ends FindEnds(const Part& part, const Mesh& mesh, const RowTable& rows, TableClock& clock);

}  // namespace heat
