#pragma once
#include "conduction.h"
#include "progress.h"

namespace heat {

struct Solution {
    int iterations = 0;
    double heatIn = 0;         // W, through the hot end
    double heatOut = 0;        // W, through the cold end
    double Imbalance() const;  // of the two, relative to the greater
};

// Fills the empty table with the temperature under each node label. Throws HeatError where the
// iteration does not come to an end or the heat does not balance.
Solution Solve(const System& system, Conduction& conduction, const Mesh& mesh, const Ends& ends,
               const RowTable& rows, TemperatureTable& temperatures, Progress& progress,
               TableClock& clock);

}  // namespace heat
