#include <alloc/mem_alloc.h>
#include <host/host_take.h>

void* mem_Malloc(std::size_t size) { return host_heap::Take(size); }
void* mem_Realloc(void* block, std::size_t size) { return host_heap::Resize(block, size); }
void mem_Free(void* block) noexcept { host_heap::GiveBack(block); }

void* mem_OperatorNewThrow(std::size_t size) { return host_heap::Take(size ? size : 1); }
void* mem_OperatorNewThrowBuiltin(std::size_t size) { return host_heap::Take(size ? size : 1); }
void* mem_OperatorNewTinyThrow(std::size_t size) { return host_heap::TakePacked(size); }
