#pragma once
#include <cstddef>

#include <host/small_heap.h>

// What the small blocks ask of the operating system; one file a system defines all of it.
namespace small_system {

// Addresses without memory, a multiple of `alignment`; null if there are none. The size is passed
// again when they are given back.
char* Reserve(std::size_t size, std::size_t alignment);
bool Commit(char* at, std::size_t size);
void Decommit(char* at, std::size_t size);  // the addresses stay; the contents go
void Release(char* region, std::size_t size);

// Recursive.
void Lock();
void Unlock();

// From Watch to Unwatch, small_heap::ThreadEnds is called for each attached hand whose thread ends.
bool WatchThreads();
void UnwatchThreads();

// Whether the process may be ending, so that other threads may be at work still (Linux) or were
// ended anywhere in it (Windows). Not so while the library is unloaded.
bool ProcessMayEnd();

// The calling thread's hand, null if it cannot have one or is about to end. Lock is held.
small_heap::Hand* AttachHand();

}  // namespace small_system
