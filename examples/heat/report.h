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
    double elementsPerNode = 0;
    std::size_t heapBytes = 0;  // of the tables, outside the pools
    std::size_t workBytes = 0;  // of the work arrays
};

void PrintReport(const Figures& figures, const std::vector<Phase>& phases);

// What --report adds: the node sets, the work arrays and the tables of the memory manager.
void PrintDetails(const NodeSets& sets, const WorkArrays& arrays);

}  // namespace heat
