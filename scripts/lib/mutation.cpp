// The state of a mutation run, in a library of its own that every part of a process shares.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <cstdlib>

namespace {
constexpr std::size_t kMost = 1 << 16;
constinit unsigned char g_reached[kMost] = {};
}  // namespace

extern "C" {
constinit int kzm_mutant = 0;
constinit unsigned char* kzm_mutants_reached = g_reached;
}

// A mapped file tells what was reached also by processes that abort.
__attribute__((constructor)) static void Start() {
    if (const char* mutant = std::getenv("KZM_MUTANT")) kzm_mutant = std::atoi(mutant);
    const char* name = std::getenv("KZM_MUTANTS_REACHED");
    const int file = name ? open(name, O_RDWR) : -1;
    if (file < 0) return;
    void* map = mmap(nullptr, kMost, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (map != MAP_FAILED) kzm_mutants_reached = static_cast<unsigned char*>(map);
    close(file);
}
