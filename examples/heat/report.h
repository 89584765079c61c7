#pragma once
#include "memory_manager.h"
#include "progress.h"
#include "solve.h"

namespace heat {

struct Figures {
    cow_String part;
    std::size_t nodes = 0;
    std::size_t elements = 0;
    long unknowns = 0;
    double lowest = 0;
    double highest = 0;
    Solution solution;
    double tableSeconds = 0;
    std::size_t heapBytes = 0;  // of the tables and node sets, outside the pools
};

void PrintReport(const Figures& figures, const std::vector<Phase>& phases);

}  // namespace heat
