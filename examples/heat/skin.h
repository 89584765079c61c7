#pragma once
#include "domain.h"
#include "ranks.h"

namespace heat {

// The surface of the part for the picture: all of it, on the first rank; the others' share of it.
// Far smaller than the part, it is all that the ranks ever join of their meshes and temperatures.
struct Skin {
    std::vector<int> labels;
    std::vector<double> coordinates;
    std::vector<double> temperatures;
    std::vector<std::array<int, 3>> triangles;  // places in the lists above
    std::vector<int> ranks;                     // that the triangles are of

    std::size_t Nodes() const { return labels.size(); }
    Point PointAt(std::size_t i) const {
        return {coordinates[3 * i], coordinates[3 * i + 1], coordinates[3 * i + 2]};
    }
};

Skin JoinSkins(const Domain& domain, const std::vector<double>& temperatureOfRow,
               const Ranks& ranks);

}  // namespace heat
