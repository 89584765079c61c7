#pragma once
#include <kzm_export.h>
#include <runtime/omi_Singleton.h>

#include <cstdint>

// The pool that copy-on-write storage can be taken from when its traffic is of interest, reached as
// omi_Singleton<KZMBasMemPoolCow>::Instance(). Blocks come from the product's heap; while tracking
// is on, requests are counted by the power of two that their size falls under. One thread at a
// time. The state is a plain record of 1064 bytes that begins with the tracking flag and is copied
// as a whole; it holds no pointers.
class KZM_API KZMBasMemPoolCow : public omi_SingletonBase<KZMBasMemPoolCow> {
public:
    // Requests and bytes since tracking began or ResetFigures, modulo 2^64.
    struct Figures {
        // Blocks, then the bytes that were asked for.
        std::uint64_t m_taken;
        std::uint64_t m_givenBack;
        std::uint64_t m_bytesTaken;
        std::uint64_t m_bytesGivenBack;
    };

    // Class 0 holds sizes of 0, class k those from 2^(k-1) to 2^k - 1.
    static constexpr unsigned kSizeClasses = 33;

    // Without tracking.
    KZMBasMemPoolCow();

    // Off, nothing is counted and the figures stay.
    void SetTracking(bool on) { m_tracking = on ? 1 : 0; }
    bool Tracking() const { return m_tracking != 0; }

    // Throws std::bad_alloc. `size` must be the same for both, for the figures only.
    void* Alloc(unsigned size);
    void Free(void* block, unsigned size);  // null is allowed and not counted

    // By size and in all; the reference follows later requests.
    const Figures& OfSizeClass(unsigned sizeClass) const;  // of the last class if there is none
    Figures Total() const;
    // All figures 0.
    void ResetFigures();

    // For the stop of the allocation library: ends the pool if there is one.
    static void FinalizeIfCreated();

private:
    std::uint8_t m_tracking;
    std::uint8_t m_reserved[7];
    Figures m_figures[kSizeClasses];
};

KZM_DECLARE_SINGLETON(KZMBasMemPoolCow)
