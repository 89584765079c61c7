#pragma once
#include <string>

#include "mesh.h"

namespace heat {

// The mesh with the temperature and the label of each node as a VTK unstructured grid (.vtu), and
// whether the solution converged, 1 or 0; data appended in binary, in this machine's byte order.
std::string VtuOf(const Mesh& mesh, const std::vector<double>& temperatureOfRow, bool isConverged);

}  // namespace heat
