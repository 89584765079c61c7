#pragma once
#include <cow/cow_String.h>

#include <vector>

#include "options.h"
#include "progress.h"

namespace heat {

// A face of a CAD model: its nodes, those on its edges included.
struct ModelFace {
    std::vector<int> labels;
    double low[3];
    double high[3];
};

// The part in tetrahedra, under the node labels of its file or of the mesher. Labels run from 1 to
// 2^31-1 in any order and with any gaps; nodes that no tetrahedron uses may be among them. Or one
// rank's share of it: its nodes, then those of other ranks that its tetrahedra touch.
struct Part {
    cow_String name;
    std::vector<int> labels;
    std::vector<double> coordinates;  // mm, x y z of each label in turn
    std::vector<int> corners;         // labels, four per tetrahedron
    std::vector<ModelFace> faces;     // none where the part is a mesh
    bool isCad = false;
    std::vector<int> haloRanks;  // of a share: the ranks of the nodes at the end, ascending
};

// Reads the file and makes tetrahedra, except where it is a mesh that holds them already. Throws
// HeatError where the file is missing, of another kind, or does not describe a solid.
Part ReadPart(const Options& options, Progress& progress);

}  // namespace heat
