#include "report.h"

#include <cow/cow_MapIterator.h>
#include <process/KZMBasOmniProcessInfo.h>
#include <sys/resource.h>

#include <algorithm>
#include <bit>
#include <cinttypes>
#include <cstdio>

#include "heat_error.h"

namespace heat {
namespace {

void PrintPool(const KZMBasCamPool& pool) {
    std::printf("  %-28s %12" PRIu64 " bytes in %" PRIu64 " blocks\n", pool.Name(),
                pool.BytesInUse(), pool.Blocks());
}

struct Column {
    const char* name;
    double RankFigures::*figure;
};
constexpr Column kColumns[] = {{"nodes", &RankFigures::nodes},
                               {"halo nodes", &RankFigures::haloNodes},
                               {"elements, shared included", &RankFigures::elements},
                               {"neighbours", &RankFigures::neighbours},
                               {"bytes sent an iteration", &RankFigures::bytesSent},
                               {"bytes in tables", &RankFigures::tableBytes},
                               {"bytes in work arrays", &RankFigures::workBytes},
                               {"bytes of memory at the peak", &RankFigures::peakBytes}};

void PrintSpreads(const std::vector<RankFigures>& ranks) {
    std::printf("%-30s %12s %12s %12s\n", Text("", static_cast<int>(ranks.size()), " ranks").CStr(),
                "least", "mean", "greatest");
    for (const auto& [name, figure] : kColumns) {
        double least = ranks[0].*figure, greatest = least, sum = 0;
        for (const RankFigures& each : ranks) {
            least = std::min(least, each.*figure);
            greatest = std::max(greatest, each.*figure);
            sum += each.*figure;
        }
        std::printf("  %-28s %12.0f %12.0f %12.0f\n", name, least, sum / double(ranks.size()),
                    greatest);
    }
}

void PrintRanks(const std::vector<RankFigures>& ranks) {
    std::printf("%4s %9s %9s %9s %9s %10s %9s %11s %11s %11s %9s\n", "rank", "process", "nodes",
                "halo", "elements", "neighbours", "sent, B", "tables, B", "work, B", "peak, B",
                "tables, s");
    for (std::size_t i = 0; i < ranks.size(); ++i) {
        const RankFigures& each = ranks[i];
        std::printf("%4zu %9.0f %9.0f %9.0f %9.0f %10.0f %9.0f %11.0f %11.0f %11.0f %9.4f\n", i,
                    each.process, each.nodes, each.haloNodes, each.elements, each.neighbours,
                    each.bytesSent, each.tableBytes, each.workBytes, each.peakBytes,
                    each.tableSeconds);
    }
}

}  // namespace

void JoinFigures(const Domain& domain, const System& system, const Ranks& ranks, Figures& figures) {
    const Mesh& mesh = domain.mesh;
    const Tables& tables = domain.tables;
    const auto shown = std::count_if(
        mesh.elements.begin(), mesh.elements.end(), [&](const std::array<int, 4>& corners) {
            return domain.LowestRank(corners, ranks.Own()) == ranks.Own();
        });
    std::vector<double> sums = {double(mesh.own), double(shown), double(system.load.size())};
    ranks.Sum(sums);
    figures.rankCount = ranks.Count();
    figures.nodes = sums[0];
    figures.elements = sums[1];
    figures.unknowns = sums[2];
    for (const auto& [name, labels] : cow_ConstMapSortedIt(domain.ends.sets)) {
        const auto own = std::count_if(labels.begin(), labels.end(),
                                       [&](int label) { return !tables.halo.IsMember(label); });
        figures.setSizes.Insert(name, ranks.Sum(double(own)));
    }
}

void JoinRankFigures(const Domain& domain, const Halo& halo, const WorkArrays& arrays,
                     const Ranks& ranks, Figures& figures) {
    const Mesh& mesh = domain.mesh;
    const Tables& tables = domain.tables;
    const double tableBytes = double(tables.rows.Footprint()) + tables.temperatures.Footprint() +
                              tables.elementsAt.Footprint();
    figures.heapBytes = tableBytes - double(MemoryManager::RowPool().BytesInUse() +
                                            MemoryManager::TemperaturePool().BytesInUse());

    RankFigures own;
    own.process = KZMBasOmniProcessInfo::ProcessId();
    own.nodes = double(mesh.own);
    own.haloNodes = double(mesh.Nodes() - mesh.own);
    own.elements = double(mesh.elements.size());
    own.neighbours = halo.Neighbours();
    own.bytesSent = double(halo.BytesSent());
    own.tableBytes = tableBytes + tables.halo.Footprint();
    own.workBytes = arrays.Bytes();
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    own.peakBytes = 1024.0 * double(usage.ru_maxrss);
    own.tableSeconds = tables.clock.Seconds();
    constexpr std::size_t kCount = sizeof own / sizeof(double);
    using Numbers = std::array<double, kCount>;
    if (!ranks.IsFirst()) {
        const auto numbers = std::bit_cast<Numbers>(own);
        ranks.Send(std::vector<double>(numbers.begin(), numbers.end()), 0);
        return;
    }
    figures.ranks.push_back(own);
    for (int rank = 1; rank < ranks.Count(); ++rank) {
        Numbers numbers;
        std::ranges::copy(ranks.ReceiveDoubles(rank), numbers.begin());
        figures.ranks.push_back(std::bit_cast<RankFigures>(numbers));
    }
}

void PrintReport(const Figures& figures, const std::vector<Phase>& phases) {
    std::printf("\n%s\n", figures.part.CStr());
    std::printf("  %-28s %12.0f\n", "nodes", figures.nodes);
    std::printf("  %-28s %12.0f\n", "elements", figures.elements);
    std::printf("  %-28s %12.2f\n", "elements per node", 4 * figures.elements / figures.nodes);
    std::printf("  %-28s %12.0f\n", "unknowns", figures.unknowns);
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
    const RankFigures& own = figures.ranks.front();
    std::printf("  %-28s %12.3f s\n", "in the library's tables", own.tableSeconds);
    std::printf("  %-28s %12.2f %%\n", "share of the total", 100 * own.tableSeconds / total);
    std::printf(figures.rankCount > 1 ? "pools of rank 0\n" : "pools\n");
    PrintPool(MemoryManager::RowPool());
    PrintPool(MemoryManager::TemperaturePool());
    std::printf("  %-28s %12.0f bytes\n", "cells and links, from heap", figures.heapBytes);
    std::printf("  %-28s %12.0f bytes\n", "work arrays, from the heap", own.workBytes);
    if (figures.rankCount > 1) PrintSpreads(figures.ranks);
}

void PrintDetails(const Figures& figures, const WorkArrays& arrays) {
    if (figures.rankCount > 1) PrintRanks(figures.ranks);
    std::printf("node sets\n");
    for (const auto& [name, size] : cow_ConstMapSortedIt(figures.setSizes)) {
        std::printf("  %-28s %12.0f nodes\n", name.CStr(), size);
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
