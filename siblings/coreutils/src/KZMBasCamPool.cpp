#include <coreutils/KZMBasCamPool.h>
#include <host/host_take.h>

namespace {
constexpr std::size_t kHeader = 16;  // keeps the alignment of the C heap
}

KZMBasCamPool::KZMBasCamPool(const char* name) : m_name(name ? name : "") {}
KZMBasCamPool::~KZMBasCamPool() = default;

void* KZMBasCamPool::Alloc(unsigned size) {
    const std::size_t whole = kHeader + size;
    if (whole < size) throw std::bad_alloc();
    void* const header = host_heap::Take(whole);
    *static_cast<unsigned*>(header) = size;
    CountTaken(size);
    return static_cast<char*>(header) + kHeader;
}

unsigned KZMBasCamPool::Free(void* block) {
    if (!block) return 0;
    void* const header = static_cast<char*>(block) - kHeader;
    const unsigned size = *static_cast<unsigned*>(header);
    host_heap::GiveBack(header);
    CountGivenBack(size);
    return size;
}

void KZMBasCamPool::CountTaken(unsigned size) {
    const std::uint64_t bytes = m_bytes.fetch_add(size, std::memory_order_relaxed) + size;
    std::uint64_t peak = m_peak.load(std::memory_order_relaxed);
    while (peak < bytes && !m_peak.compare_exchange_weak(peak, bytes, std::memory_order_relaxed)) {
    }
    m_blocks.fetch_add(1, std::memory_order_relaxed);
    m_requests.fetch_add(1, std::memory_order_relaxed);
}

void KZMBasCamPool::CountGivenBack(unsigned size) {
    m_bytes.fetch_sub(size, std::memory_order_relaxed);
    m_blocks.fetch_sub(1, std::memory_order_relaxed);
}
