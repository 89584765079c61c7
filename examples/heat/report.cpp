#include "report.h"

#include <cow/cow_MapIterator.h>

#include <cinttypes>
#include <cstdio>

namespace heat {
namespace {

void PrintPool(const KZMBasCamPool& pool) {
    std::printf("  %-28s %12" PRIu64 " bytes in %" PRIu64 " blocks\n", pool.Name(),
                pool.BytesInUse(), pool.Blocks());
}

}  // namespace

void PrintReport(const Figures& figures, const std::vector<Phase>& phases) {
    std::printf("\n%s\n", figures.part.CStr());
    std::printf("  %-28s %12zu\n", "nodes", figures.nodes);
    std::printf("  %-28s %12zu\n", "elements", figures.elements);
    std::printf("  %-28s %12.2f\n", "elements per node", figures.elementsPerNode);
    std::printf("  %-28s %12ld\n", "unknowns", figures.unknowns);
    std::printf("  %-28s %12d\n", "iterations", figures.solution.iterations);
    std::printf("  %-28s %12s\n", "converged", figures.solution.isConverged ? "yes" : "no");
    std::printf("  %-28s %12.4f C\n", "lowest temperature", figures.lowest);
    std::printf("  %-28s %12.4f C\n", "highest temperature", figures.highest);
    std::printf("  %-28s %12.6g W\n", "heat in", figures.solution.heatIn);
    std::printf("  %-28s %12.6g W\n", "heat out", figures.solution.heatOut);
    std::printf("  %-28s %12.2g\n", "relative difference", figures.solution.Imbalance());
    double total = 0;
    std::printf("time\n");
    for (const Phase& phase : phases) {
        total += phase.seconds;
        std::printf("  %-28s %12.3f s\n", phase.name.CStr(), phase.seconds);
    }
    std::printf("  %-28s %12.3f s\n", "total", total);
    std::printf("  %-28s %12.3f s\n", "in the library's tables", figures.tableSeconds);
    std::printf("  %-28s %12.2f %%\n", "share of the total", 100 * figures.tableSeconds / total);
    std::printf("pools\n");
    PrintPool(MemoryManager::RowPool());
    PrintPool(MemoryManager::TemperaturePool());
    std::printf("  %-28s %12zu bytes\n", "cells and links, from heap", figures.heapBytes);
    std::printf("  %-28s %12zu bytes\n", "work arrays, from the heap", figures.workBytes);
}

void PrintDetails(const NodeSets& sets, const WorkArrays& arrays) {
    std::printf("node sets\n");
    for (const auto& [name, labels] : cow_ConstMapSortedIt(sets)) {
        std::printf("  %-28s %12d nodes\n", name.CStr(), labels.Length());
    }
    std::printf("\n");
    arrays.Print();
    const srm_ResourceConstData& description = MemoryManager::Description();
    description.PrintProcedures(stdout, 0);
    description.PrintPhases(stdout, 0);
    description.PrintResources(stdout, 0);
    description.PrintPriorities(stdout, 0);
}

}  // namespace heat
