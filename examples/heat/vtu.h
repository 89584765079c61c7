#pragma once
#include <string>

#include "mesh.h"

namespace heat {

// The mesh with the temperature and the label of each node as a VTK unstructured grid (.vtu): data
// appended in binary, in this machine's byte order.
std::string VtuOf(const Mesh& mesh, const std::vector<double>& temperatureOfRow);

}  // namespace heat
