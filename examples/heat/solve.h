#pragma once
#include "alerts.h"
#include "conduction.h"

namespace heat {

struct Solution {
    int iterations = 0;
    bool isConverged = true;   // false: stopped by an alert
    double heatIn = 0;         // W, through the hot end
    double heatOut = 0;        // W, through the cold end
    double Imbalance() const;  // of the two, relative to the greater
};

// Fills the empty table of temperatures. A stop ends the iteration with the best solution so far.
// Throws HeatError where the iteration does not come to an end or the heat does not balance.
Solution Solve(System& system, Conduction& conduction, const Mesh& mesh, const Ends& ends,
               Tables& tables, WorkArrays& arrays, Progress& progress, const Alerts& alerts);

}  // namespace heat
