#include <cow/cow_NullValue.h>

#include <atomic>

namespace {

constinit std::atomic<cow_NullValueLink*> g_kept{nullptr};
constinit std::atomic<unsigned int> g_generation{0};

}  // namespace

void cow_KeepNullValue(cow_NullValueLink* link) {
    link->m_next = g_kept.load(std::memory_order_relaxed);
    while (!g_kept.compare_exchange_weak(link->m_next, link, std::memory_order_release,
                                         std::memory_order_relaxed)) {
    }
}

unsigned int cow_NullValueGeneration() { return g_generation.load(std::memory_order_relaxed); }

void cow_ReleaseNullValues() {
    ++g_generation;
    for (cow_NullValueLink* link = g_kept.exchange(nullptr, std::memory_order_acquire); link;) {
        cow_NullValueLink* const next = link->m_next;
        link->m_destroy(link);
        link = next;
    }
}
