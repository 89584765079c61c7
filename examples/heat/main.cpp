#include <omi/omi_IntTableIterator.h>
#include <process/KZMBasOmniProcessInfo.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <limits>
#include <new>

#include "alerts.h"
#include "files.h"
#include "memory_manager.h"
#include "output_folder.h"
#include "picture.h"
#include "report.h"
#include "vtu.h"

namespace heat {
namespace {

void IntroduceProcess(const Options& options) {
    KZMBasOmniProcessInfo::Initialize();
    std::printf("%s, process %d, rank %d\n", KZMBasOmniProcessInfo::ExeName(),
                KZMBasOmniProcessInfo::ProcessId(), KZMBasOmniProcessInfo::Rank());
    if (!options.environmentFile.Empty()) AppendEnvironment(options.environmentFile);
}

// The temperatures in the order of the rows, for those who draw and write.
std::vector<double> ByRow(const Mesh& mesh, Tables& tables) {
    std::vector<double> byRow(mesh.Nodes());
    tables.clock.Time([&] {
        for (std::size_t row = 0; row < byRow.size(); ++row) {
            tables.temperatures.ConstGetValue(mesh.labels[row], byRow[row]);
        }
    });
    return byRow;
}

void FindExtremes(Tables& tables, Figures& figures) {
    figures.lowest = std::numeric_limits<double>::max();
    figures.highest = std::numeric_limits<double>::lowest();
    tables.clock.Time([&] {
        omi_IntTableIterator<double, KZMBasSrmAllocator<kTemperatureResource>> each(
            tables.temperatures);
        for (each.First(); !each.IsDone(); each.Next()) {
            figures.lowest = std::min(figures.lowest, each.CurrentValue());
            figures.highest = std::max(figures.highest, each.CurrentValue());
        }
    });
}

// The exit code.
int Run(const Options& options) {
    OutputFolder folder(options.outDir);
    IntroduceProcess(options);
    Progress progress;
    Alerts alerts(progress);
    const Part part = ReadPart(options, progress);

    progress.Begin("numbering");
    Tables tables;
    const Mesh mesh = BuildMesh(part, tables);
    const Ends ends = FindEnds(part, mesh, tables);

    progress.Begin("assembling");
    WorkArrays arrays;
    Conduction conduction(mesh, tables.elementsAt, options.conductivity);
    const BoundaryValues held = ValuesAt(ends, options.hot, options.cold, tables.clock);
    System system = Assemble(conduction, mesh, held, tables, arrays);

    alerts.StopGently();
    progress.Begin("solving");
    Figures figures;
    figures.solution = Solve(system, conduction, mesh, ends, tables, arrays, progress, alerts);

    progress.Begin("writing");
    FindExtremes(tables, figures);
    const std::vector<double> byRow = ByRow(mesh, tables);
    figures.part = part.name;
    figures.nodes = mesh.Nodes();
    figures.elements = mesh.elements.size();
    figures.elementsPerNode = tables.elementsAt.Size() / static_cast<double>(mesh.Nodes());
    figures.unknowns = static_cast<long>(system.load.size());
    folder.Add("temperature.vtu", VtuOf(mesh, byRow, figures.solution.isConverged));
    folder.Add("temperature.png", PictureOf(mesh, byRow, ends, part.name, figures.solution));
    folder.Commit();
    progress.End();

    figures.tableSeconds = tables.clock.Seconds();
    figures.heapBytes = std::size_t{tables.rows.Footprint()} + tables.temperatures.Footprint() +
                        tables.elementsAt.Footprint() - MemoryManager::RowPool().BytesInUse() -
                        MemoryManager::TemperaturePool().BytesInUse();
    figures.workBytes = arrays.Bytes();
    PrintReport(figures, progress.Phases());
    if (options.report) PrintDetails(ends.sets, arrays);
    std::printf("results\n  %s\n  %s\n", folder.Path("temperature.vtu").CStr(),
                folder.Path("temperature.png").CStr());
    FinishOutput();
    if (figures.solution.isConverged) return 0;
    std::fputs("heat: stopped before the solution converged\n", stderr);
    return 128 + alerts.StopSignal();
}

}  // namespace
}  // namespace heat

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away does not stop the job
    std::signal(SIGXFSZ, SIG_IGN);  // a limit on files is an error of writing
    try {
        const heat::LibrarySession session;
        const heat::Options options = heat::ParseOptions(argc, argv);
        if (options.help) {
            std::fputs(heat::kUsage, stdout);
            heat::FinishOutput();
            return 0;
        }
        return heat::Run(options);
    } catch (const std::bad_alloc&) {
        std::fputs("heat: out of memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "heat: %s\n", error.what());
    }
    return 1;
}
