#pragma once
#include <kzm_export.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

// A memory pool with a name and running figures. This one takes its blocks from the C heap, with
// 16 bytes before each for its size; derive from it to serve them from elsewhere. Blocks go back
// to the pool they came from, from any thread.
class KZM_API KZMBasCamPool {
public:
    explicit KZMBasCamPool(const char* name = "");  // kept as a pointer: pass a literal
    KZMBasCamPool(const KZMBasCamPool&) = delete;
    KZMBasCamPool& operator=(const KZMBasCamPool&) = delete;
    virtual ~KZMBasCamPool();  // blocks still alive stay valid, but can no longer be freed

    // Never null, also for 0 bytes; the contents are open. Throws std::bad_alloc.
    virtual void* Alloc(unsigned size);

    // The block's size. Null is allowed and gives 0.
    virtual unsigned Free(void* block);

    // The name as passed, and figures: bytes alive and the most there ever were, without heads, and
    // blocks alive and asked for.
    const char* Name() const { return m_name; }
    std::uint64_t BytesInUse() const { return m_bytes; }  // as asked for
    std::uint64_t PeakBytes() const { return m_peak; }
    std::uint64_t Blocks() const { return m_blocks; }  // alive
    std::uint64_t Requests() const { return m_requests; }

protected:
    // For pools that serve from elsewhere and keep these figures.
    void CountTaken(unsigned size);
    void CountGivenBack(unsigned size);

private:
    const char* m_name;
    std::atomic<std::uint64_t> m_bytes{0};
    std::atomic<std::uint64_t> m_peak{0};
    std::atomic<std::uint64_t> m_blocks{0};
    std::atomic<std::uint64_t> m_requests{0};
};
