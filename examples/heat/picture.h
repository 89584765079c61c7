#pragma once
#include <string>

#include "report.h"
#include "skin.h"

namespace heat {

// A PNG file of the part's surface, coloured by temperature, with a legend. The given axis lies
// across the picture. White lines separate what different ranks computed; a solution that did not
// converge is marked. Throws HeatError where it cannot be made.
std::string PictureOf(const Skin& skin, int axis, const Figures& figures);

}  // namespace heat
