#pragma once
#include <string>

#include "ends.h"

namespace heat {

// A PNG file of the part's surface, coloured by temperature, with a legend. The longest axis lies
// across the picture. Throws HeatError where it cannot be made.
std::string PictureOf(const Mesh& mesh, const std::vector<double>& temperatureOfRow,
                      const Ends& ends, const cow_String& name);

}  // namespace heat
