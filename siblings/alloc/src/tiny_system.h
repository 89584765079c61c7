#pragma once
#include <cstddef>

#include "tiny_heap.h"

// What the tiny blocks ask of the operating system; one file a system defines all of it.
namespace tiny_system {

// Addresses without memory, a multiple of `alignment`; null if there are none. The size is passed
// again when they are given back.
char* Reserve(std::size_t size, std::size_t alignment);
bool Commit(char* at, std::size_t size);
void Release(char* region, std::size_t size);

// The lock of the central stock; also recursive where the system calls ThreadEnds from Unwatch.
void Lock();
void Unlock();

// From Watch to Unwatch, tiny_heap::ThreadEnds is called for each attached cache whose thread ends.
bool WatchThreads();
void UnwatchThreads();

// The calling thread's cache, null if it cannot have one or is about to end. Lock is held.
tiny_heap::ThreadCache* AttachCache();

}  // namespace tiny_system
