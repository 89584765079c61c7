#pragma once
#include <host/host_heap.h>

#include <cstdlib>
#include <new>

// For one source of a program: the global operator new, which the standard library's containers
// take from, asks the probe of the product's heap as well. On Windows only in the program's own
// code.
[[gnu::noinline]] void* operator new(std::size_t size) {
    auto& left = host_heap::g_probe.untilFailure;
    void* const block = left != 0 && left-- == 1 ? nullptr : std::malloc(size ? size : 1);
    return block ? block : throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }
