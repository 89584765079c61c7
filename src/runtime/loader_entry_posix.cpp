#include <dlfcn.h>
#include <runtime/loader_entry.h>

#include <cstdlib>

namespace {

constinit bool g_processEnds = true;

// What the program was started with is never unloaded. What it has loaded since registers a routine
// that runs before the entry routines when the process ends, and after them when it is unloaded.
__attribute__((constructor)) void Load() {
    if (void* const program = dlopen(nullptr, RTLD_LAZY)) {
        g_processEnds = dlsym(program, "KZMBasShared_finalizeC") != nullptr ||
                        std::atexit([] { g_processEnds = true; }) != 0;
        dlclose(program);
    }
    kzm_LibraryLoaded();
}

__attribute__((destructor)) void Unload() { kzm_LibraryUnloaded(g_processEnds); }

}  // namespace
