#pragma once
#include <string>

#include "domain.h"
#include "ranks.h"

namespace heat {

// The mesh with the temperature and the label of each node as a VTK unstructured grid (.vtu), and
// whether the solution converged, 1 or 0; data appended in binary, in this machine's byte order.
// A share holds the rank of each node as well and marks, as VTK does, what other pieces show: the
// halo's nodes, and elements that touch a node of a lower rank.
std::string VtuOf(const Domain& domain, const std::vector<double>& temperatureOfRow,
                  bool isConverged, const Ranks& ranks);

// The index (.pvtu) that joins the pieces of all ranks.
std::string PvtuOf(const Ranks& ranks);
std::string PieceName(int rank);  // temperature_RANK.vtu

}  // namespace heat
