#pragma once
#include <string>

#include "solve.h"

namespace heat {

// A PNG file of the part's surface, coloured by temperature, with a legend. The longest axis lies
// across the picture. A solution that did not converge is marked. Throws HeatError where it cannot
// be made.
std::string PictureOf(const Mesh& mesh, const std::vector<double>& temperatureOfRow,
                      const Ends& ends, const cow_String& name, const Solution& solution);

}  // namespace heat
