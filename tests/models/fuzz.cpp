// A model under libFuzzer: fuzz_models --model=NAME [options of libFuzzer]. With --list it tells
// the names. The first byte of an input says whether memory is refused and how far the keys go,
// the others are the program.
#include <models/model.h>

#include <cstdlib>

namespace {
constinit decltype(models::Model::run) g_run = nullptr;
constinit unsigned long long g_edits = 0;
}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    const std::string asked = *argc > 1 ? (*argv)[1] : "";
    for (const models::Model& model : models::All()) {
        if (asked == "--list") std::puts(model.name);
        if (asked == std::string("--model=") + model.name) g_run = model.run;
    }
    if (!g_run) std::exit(asked == "--list" ? 0 : 2);
    std::atexit([] { std::fprintf(stderr, "edits: %llu\n", g_edits); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0) return 0;
    try {
        const std::vector<unsigned char> program(data + 1, data + size);
        const models::Program edits(program, *data & 4 ? ~0u : 0xffff);
        g_edits += g_run(edits, *data % 4 == 0).steps;
    } catch (const models::Difference& difference) {
        std::fprintf(stderr, "%s\n", difference.what());
        std::abort();
    }
    return 0;
}
