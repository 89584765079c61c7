#include <omi/omi_IntTableIterator.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <limits>
#include <new>

#include "heat_error.h"
#include "memory_manager.h"
#include "output_folder.h"
#include "picture.h"
#include "report.h"
#include "vtu.h"

namespace heat {
namespace {

// The temperatures in the order of the rows, for those who draw and write.
std::vector<double> ByRow(const Mesh& mesh, const TemperatureTable& temperatures,
                          TableClock& clock) {
    std::vector<double> byRow(mesh.labels.size());
    clock.Time([&] {
        for (std::size_t row = 0; row < byRow.size(); ++row) {
            temperatures.ConstGetValue(mesh.labels[row], byRow[row]);
        }
    });
    return byRow;
}

void FindExtremes(const TemperatureTable& temperatures, Figures& figures, TableClock& clock) {
    figures.lowest = std::numeric_limits<double>::max();
    figures.highest = std::numeric_limits<double>::lowest();
    clock.Time([&] {
        omi_IntTableIterator<double, KZMBasSrmAllocator<kTemperatureResource>> each(temperatures);
        for (each.First(); !each.IsDone(); each.Next()) {
            figures.lowest = std::min(figures.lowest, each.CurrentValue());
            figures.highest = std::max(figures.highest, each.CurrentValue());
        }
    });
}

void Run(const Options& options) {
    OutputFolder folder(options.outDir);
    Progress progress;
    TableClock clock;
    const Part part = ReadPart(options, progress);

    progress.Begin("numbering");
    RowTable rows;
    const Mesh mesh = BuildMesh(part, rows, clock);
    const Ends ends = FindEnds(part, mesh, rows, clock);

    progress.Begin("assembling");
    Conduction conduction(mesh, options.conductivity);
    const System system = Assemble(conduction, mesh, ends, rows, options.hot, options.cold, clock);

    progress.Begin("solving");
    TemperatureTable temperatures;
    Figures figures;
    figures.solution = Solve(system, conduction, mesh, ends, rows, temperatures, progress, clock);

    progress.Begin("writing");
    FindExtremes(temperatures, figures, clock);
    const std::vector<double> byRow = ByRow(mesh, temperatures, clock);
    figures.part = part.name;
    figures.nodes = mesh.points.size();
    figures.elements = mesh.elements.size();
    figures.unknowns = static_cast<long>(system.load.size());
    folder.Add("temperature.vtu", VtuOf(mesh, byRow));
    folder.Add("temperature.png", PictureOf(mesh, byRow, ends, part.name));
    folder.Commit();
    progress.End();

    figures.tableSeconds = clock.Seconds();
    figures.heapBytes = std::size_t{rows.Footprint()} + temperatures.Footprint() +
                        ends.hot.Footprint() + ends.cold.Footprint() -
                        MemoryManager::RowPool().BytesInUse() -
                        MemoryManager::TemperaturePool().BytesInUse();
    PrintReport(figures, progress.Phases());
    std::printf("results\n  %s\n  %s\n", folder.Path("temperature.vtu").CStr(),
                folder.Path("temperature.png").CStr());
}

}  // namespace
}  // namespace heat

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away does not stop the job
    try {
        const heat::LibrarySession session;
        const heat::Options options = heat::ParseOptions(argc, argv);
        if (options.help) {
            std::fputs(heat::kUsage, stdout);
        } else {
            heat::Run(options);
        }
        return 0;
    } catch (const std::bad_alloc&) {
        std::fputs("heat: out of memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "heat: %s\n", error.what());
    }
    return 1;
}
