#include "options.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include "heat_error.h"

namespace heat {

const char kUsage[] =
    "usage: heat PART [--size H] [--hot T1] [--cold T2] [--conductivity K] [--out DIR]\n"
    "            [--report] [--save-environment FILE]\n"
    "\n"
    "Steady temperature in a solid part whose two ends along its longest axis are held at T1\n"
    "and T2. Writes temperature.vtu and temperature.png.\n"
    "\n"
    "  PART                CAD file (.step .stp .brep) or mesh (.msh .stl), lengths in mm\n"
    "  --size H            edge length of the tetrahedra in mm [a fortieth of the longest axis];\n"
    "                      a mesh that already has tetrahedra is taken as it is\n"
    "  --hot T1            temperature of the end with the lowest coordinate, Celsius [100]\n"
    "  --cold T2           temperature of the other end, Celsius, below T1 [20]\n"
    "  --conductivity K    of the material, W/(m K) [50]\n"
    "  --out DIR           folder of the results, made where missing [.]\n"
    "  --report            lists node sets, work arrays and memory resources as well\n"
    "  --save-environment FILE\n"
    "                      appends the environment of this process to FILE\n"
    "\n"
    "Ctrl-C or SIGTERM stops the iteration: the best solution so far is written, marked as not\n"
    "converged. SIGUSR1 prints how far the job is. A terminal that is closed does not stop it.\n"
    "\n"
    "mpiexec -n N heat ... shares the work among N processes: temperature.pvtu joins their\n"
    "temperature_*.vtu.\n";

namespace {

double Number(const char* option, const char* text) {
    double value = 0;
    const char* end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, value);
    if (error != std::errc() || stop != end || !std::isfinite(value)) {
        throw HeatError(Text(option, " takes a number, not '", text, "'"));
    }
    return value;
}

double PositiveNumber(const char* option, const char* text) {
    const double value = Number(option, text);
    if (value <= 0) throw HeatError(Text(option, " must be above zero, not ", text));
    return value;
}

}  // namespace

Options ParseOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const cow_String word(argv[i]);
        if (word.Compare("--help") == 0 || word.Compare("-h") == 0) {
            options.help = true;
            return options;
        }
        if (argv[i][0] != '-') {
            if (!options.part.Empty()) {
                throw HeatError(Text("one part at a time: '", options.part, "' or '", word, "'"));
            }
            options.part = word;
            continue;
        }
        if (word.Compare("--report") == 0) {
            options.report = true;
            continue;
        }
        const bool known = word.Compare("--size") == 0 || word.Compare("--hot") == 0 ||
                           word.Compare("--cold") == 0 || word.Compare("--out") == 0 ||
                           word.Compare("--conductivity") == 0 ||
                           word.Compare("--save-environment") == 0;
        if (!known) throw HeatError(Text("unknown option '", word, "'; see heat --help"));
        if (i + 1 == argc) throw HeatError(Text(argv[i], " needs a value"));
        const char* value = argv[++i];
        if (word.Compare("--size") == 0) options.size = PositiveNumber("--size", value);
        if (word.Compare("--hot") == 0) options.hot = Number("--hot", value);
        if (word.Compare("--cold") == 0) options.cold = Number("--cold", value);
        if (word.Compare("--out") == 0) options.outDir = value;
        if (word.Compare("--save-environment") == 0) {
            if (*value == '\0') throw HeatError("--save-environment needs the name of a file");
            options.environmentFile = value;
        }
        if (word.Compare("--conductivity") == 0) {
            options.conductivity = PositiveNumber("--conductivity", value);
        }
    }
    if (options.part.Empty()) throw HeatError("no part given; see heat --help");
    if (options.outDir.Empty()) throw HeatError("--out needs the name of a folder");
    if (options.hot <= options.cold) throw HeatError("--hot must be above --cold");
    return options;
}

}  // namespace heat
