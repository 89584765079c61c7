#pragma once
#include "alerts.h"
#include "domain.h"
#include "halo.h"

namespace heat {

struct Solution {
    int iterations = 0;
    bool isConverged = true;   // false: stopped by an alert
    int stopSignal = 0;        // of that alert
    double heatIn = 0;         // W, through the hot end
    double heatOut = 0;        // W, through the cold end
    double Imbalance() const;  // of the two, relative to the greater
};

// Fills the empty table of temperatures, on all ranks together. A stop that one of them hears ends
// the iteration on all, with the best solution so far. Throws HeatError where the iteration does
// not come to an end or the heat does not balance.
Solution Solve(System& system, Conduction& conduction, Domain& domain, Halo& halo, Ranks& ranks,
               WorkArrays& arrays, Progress& progress, const Alerts& alerts);

}  // namespace heat
