#pragma once
#include <cow/cow_String.h>

namespace heat {

struct Options {
    cow_String part;
    cow_String outDir = ".";
    double size = 0;             // edge length of the tetrahedra, mm; 0: a fortieth of the part
    double hot = 100;            // degrees Celsius, at the end with the lowest coordinate
    double cold = 20;            // degrees Celsius, at the other end
    double conductivity = 50;    // W/(m K), about that of plain steel
    cow_String environmentFile;  // to append the environment to; none if empty
    bool report = false;
    bool help = false;
};

extern const char kUsage[];

// Throws HeatError for anything that is not a complete and sensible command line.
Options ParseOptions(int argc, char** argv);

}  // namespace heat
