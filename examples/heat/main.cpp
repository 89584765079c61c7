#include <omi/omi_IntTableIterator.h>
#include <process/KZMBasOmniProcessInfo.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <optional>

#include "alerts.h"
#include "distribute.h"
#include "files.h"
#include "memory_manager.h"
#include "results.h"

namespace heat {
namespace {

void IntroduceProcess(const Options& options, const Ranks& ranks) {
    std::printf("%s, process %d, rank %d", KZMBasOmniProcessInfo::ExeName(),
                KZMBasOmniProcessInfo::ProcessId(), KZMBasOmniProcessInfo::Rank());
    std::printf(ranks.Count() > 1 ? " of %d\n" : "\n", ranks.Count());
    if (!options.environmentFile.Empty()) AppendEnvironment(options.environmentFile);
}

std::unique_ptr<Domain> ReadDomain(const Options& options, Progress& progress) {
    const Part part = ReadPart(options, progress);
    progress.Begin("numbering");
    auto domain = std::make_unique<Domain>();
    domain->name = part.name;
    domain->mesh = BuildMesh(part, domain->tables);
    domain->ends = FindEnds(part, domain->mesh, domain->tables);
    return domain;
}

// The temperatures in the order of the rows, for those who draw and write.
std::vector<double> ByRow(Domain& domain) {
    std::vector<double> byRow(domain.mesh.Nodes());
    domain.tables.clock.Time([&] {
        for (std::size_t row = 0; row < byRow.size(); ++row) {
            domain.tables.temperatures.ConstGetValue(domain.mesh.labels[row], byRow[row]);
        }
    });
    return byRow;
}

void FindExtremes(Tables& tables, const Ranks& ranks, Figures& figures) {
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
    figures.lowest = ranks.Least(figures.lowest);
    figures.highest = ranks.Greatest(figures.highest);
}

// The exit code.
int Run(const Options& options, Ranks& ranks) {
    Results results(options.outDir, ranks);
    Progress progress(ranks.IsFirst());
    Alerts alerts(progress);
    std::unique_ptr<Domain> domain;
    ranks.Together([&] {
        if (!ranks.IsFirst()) return;
        IntroduceProcess(options, ranks);
        domain = ReadDomain(options, progress);
    });
    if (ranks.Count() > 1) {
        progress.Begin("distributing");
        domain = Distribute(std::move(domain), ranks);
    }

    progress.Begin("assembling");
    WorkArrays arrays;
    std::optional<Conduction> conduction;
    std::optional<System> system;
    std::optional<Halo> halo;
    ranks.Together([&] {
        Tables& tables = domain->tables;
        conduction.emplace(domain->mesh, tables.elementsAt, options.conductivity);
        const BoundaryValues held = ValuesAt(domain->ends, options.hot, options.cold, tables.clock);
        const double guess = (options.hot + options.cold) / 2;
        system.emplace(Assemble(*conduction, domain->mesh, held, guess, tables, arrays));
        halo.emplace(domain->mesh, tables, *system, ranks, arrays);
    });

    alerts.StopGently();
    progress.Begin("solving");
    Figures figures;
    figures.solution = Solve(*system, *conduction, *domain, *halo, ranks, arrays, progress, alerts);

    progress.Begin("writing");
    figures.part = domain->name;
    FindExtremes(domain->tables, ranks, figures);
    const std::vector<double> byRow = ByRow(*domain);
    JoinFigures(*domain, *system, ranks, figures);
    results.Write(*domain, byRow, figures);
    JoinRankFigures(*domain, *halo, arrays, ranks, figures);
    progress.End();

    ranks.Together([&] {
        if (!ranks.IsFirst()) return;
        PrintReport(figures, progress.Phases());
        if (options.report) PrintDetails(figures, arrays);
        results.PrintNames();
        FinishOutput();
        if (!figures.solution.isConverged) {
            std::fputs("heat: stopped before the solution converged\n", stderr);
        }
    });
    return figures.solution.isConverged ? 0 : 128 + figures.solution.stopSignal;
}

void Complain(const Ranks& ranks, const char* text) {
    if (ranks.IsFirst()) {
        std::fprintf(stderr, "heat: %s\n", text);
    } else {
        std::fprintf(stderr, "heat: rank %d: %s\n", ranks.Own(), text);
    }
}

int RunCommandLine(int argc, char** argv, Ranks& ranks) {
    try {
        Options options;
        ranks.Together([&] { options = ParseOptions(argc, argv); });
        if (!options.help) return Run(options, ranks);
        ranks.Together([&] {
            if (!ranks.IsFirst()) return;
            std::fputs(kUsage, stdout);
            FinishOutput();
        });
        return 0;
    } catch (const FailedElsewhere&) {
    } catch (const std::bad_alloc&) {
        Complain(ranks, "out of memory");
    } catch (const std::exception& error) {
        Complain(ranks, error.what());
    }
    ranks.GiveUp();
    return 1;
}

}  // namespace
}  // namespace heat

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away does not stop the job
    std::signal(SIGHUP, SIG_IGN);   // nor does a terminal that is closed
    std::signal(SIGXFSZ, SIG_IGN);  // a limit on files is an error of writing
    try {
        const heat::LibrarySession session;
        heat::Ranks ranks;
        return heat::RunCommandLine(argc, argv, ranks);
    } catch (const std::exception& error) {  // nothing has begun
        std::fprintf(stderr, "heat: %s\n", error.what());
    }
    return 1;
}
