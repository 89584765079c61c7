#pragma once
#include <kzm_export.h>
#include <runtime/omi_Singleton.h>

#include <cstdint>

// Figures of the process's file transfers, as reported by the code that makes them. One thread.
class KZM_API KZMBasUtlIOStats : public omi_SingletonBase<KZMBasUtlIOStats> {
public:
    struct Transfers {
        std::uint64_t count = 0;
        std::uint64_t bytes = 0;
    };

    KZMBasUtlIOStats();
    ~KZMBasUtlIOStats();

    void CountRead(std::uint64_t bytes);
    void CountWrite(std::uint64_t bytes);
    void Reset();

    const Transfers& Reads() const { return m_reads; }
    const Transfers& Writes() const { return m_writes; }

private:
    Transfers m_reads;
    Transfers m_writes;
};
KZM_DECLARE_SINGLETON(KZMBasUtlIOStats)
