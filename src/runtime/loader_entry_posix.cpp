#include <runtime/loader_entry.h>

__attribute__((constructor)) static void Load() { kzm_LibraryLoaded(); }

__attribute__((destructor)) static void Unload() { kzm_LibraryUnloaded(); }
