#pragma once
#include <algorithm>

#include "ends.h"

namespace heat {

// What a rank computes on: the whole part, or its share of it.
struct Domain {
    cow_String name;  // of the part
    Tables tables;
    Mesh mesh;
    Ends ends;

    // The rank that a node belongs to; `own` is this one.
    int RankOf(int row, int own) const {
        return mesh.IsOwn(row) ? own : tables.halo.ConstGet(mesh.LabelOf(row));
    }
    // Of the ranks that an element or a triangle touches, the one that shows it.
    template <std::size_t n>
    int LowestRank(const std::array<int, n>& rows, int own) const {
        int lowest = own;
        for (const int row : rows) lowest = std::min(lowest, RankOf(row, own));
        return lowest;
    }
};

}  // namespace heat
