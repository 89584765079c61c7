#include <alloc/KZMBasAlloc.h>
#include <alloc/KZMBasMemPoolCow.h>
#include <host/host_take.h>

#include "mem_RegistryAccess.h"

namespace {
constinit unsigned g_starts = 0;
}

void KZMBasAlloc_initialize(int& count) {
    if (g_starts++ != 0) return;
    ++count;
    host_heap::Start();
    mem_RegistryAccess::Open();
}

void KZMBasAlloc_finalize(int& count) {
    if (g_starts-- != 1) return;
    --count;
    KZMBasMemPoolCow::FinalizeIfCreated();
    mem_RegistryAccess::Close();
    host_heap::Stop();
}
