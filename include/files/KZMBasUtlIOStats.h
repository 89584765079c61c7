#pragma once
#include <kzm_export.h>
#include <runtime/omi_Singleton.h>

#include <cstdint>

// Figures of the process's file transfers, as reported by the code that makes them. One thread.
class KZM_API KZMBasUtlIOStats : public omi_SingletonBase<KZMBasUtlIOStats> {
public:
    // How many transfers there were, and of how many bytes in all.
    struct Transfers {
        // Since the start or the last Reset.
        std::uint64_t count = 0;
        std::uint64_t bytes = 0;
    };

    // All figures 0.
    KZMBasUtlIOStats();
    ~KZMBasUtlIOStats();

    // One transfer more, of so many bytes.
    void CountRead(std::uint64_t bytes);
    void CountWrite(std::uint64_t bytes);
    // All figures 0 again.
    void Reset();

    // What has been counted so far; the references stay valid and follow later counts.
    const Transfers& Reads() const { return m_reads; }
    const Transfers& Writes() const { return m_writes; }

private:
    Transfers m_reads;
    Transfers m_writes;
};
KZM_DECLARE_SINGLETON(KZMBasUtlIOStats)
