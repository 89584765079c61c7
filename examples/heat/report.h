#pragma once
#include "memory_manager.h"
#include "progress.h"
#include "solve.h"

namespace heat {

// What each rank tells the first one; numbers of any kind, since they go in one message.
struct RankFigures {
    double process = 0;  // identifier
    double nodes = 0;
    double haloNodes = 0;
    double elements = 0;  // with those that other ranks have as well
    double neighbours = 0;
    double bytesSent = 0;  // to them, by an iteration
    double tableBytes = 0;
    double workBytes = 0;  // of the work arrays
    double peakBytes = 0;  // of memory that the process ever had at once
    double tableSeconds = 0;
};

// Of the whole job, as far as nothing else is said.
struct Figures {
    cow_String part;
    double nodes = 0;
    double elements = 0;
    double unknowns = 0;
    double lowest = 0;
    double highest = 0;
    Solution solution;
    double heapBytes = 0;  // of this rank's tables, outside the pools
    cow_Map<cow_String, double> setSizes;
    int rankCount = 1;
    std::vector<RankFigures> ranks;  // on the first rank
};

// On all ranks together. The solution is there before the first, the results are written before the
// second, which counts the memory.
void JoinFigures(const Domain& domain, const System& system, const Ranks& ranks, Figures& figures);
void JoinRankFigures(const Domain& domain, const Halo& halo, const WorkArrays& arrays,
                     const Ranks& ranks, Figures& figures);

void PrintReport(const Figures& figures, const std::vector<Phase>& phases);

// What --report adds: each rank, the node sets, the work arrays and the tables of the memory
// manager.
void PrintDetails(const Figures& figures, const WorkArrays& arrays);

}  // namespace heat
