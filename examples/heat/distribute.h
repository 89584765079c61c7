#pragma once
#include <memory>

#include "domain.h"
#include "ranks.h"

namespace heat {

// Gives each rank its share of the first one's domain; the others pass null. A share holds the
// nodes that METIS assigns to the rank, so that shares are about equal and few elements touch two;
// all elements at these nodes; and as halo the other nodes of those elements. So a rank forms the
// equations of its nodes without asking anybody. Throws HeatError where there are too few nodes.
std::unique_ptr<Domain> Distribute(std::unique_ptr<Domain> whole, Ranks& ranks);

}  // namespace heat
