#include "report.h"

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
    std::printf("  %-28s %12ld\n", "unknowns", figures.unknowns);
    std::printf("  %-28s %12d\n", "iterations", figures.solution.iterations);
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
    std::printf("  %-28s %12zu bytes\n", "cells and sets, from the heap", figures.heapBytes);
}

}  // namespace heat
