#include <files/KZMBasUtlIOStats.h>

KZM_DEFINE_SINGLETON(KZMBasUtlIOStats)

KZMBasUtlIOStats::KZMBasUtlIOStats() {}
KZMBasUtlIOStats::~KZMBasUtlIOStats() {}

void KZMBasUtlIOStats::CountRead(std::uint64_t bytes) {
    ++m_reads.count;
    m_reads.bytes += bytes;
}

void KZMBasUtlIOStats::CountWrite(std::uint64_t bytes) {
    ++m_writes.count;
    m_writes.bytes += bytes;
}

void KZMBasUtlIOStats::Reset() { m_reads = m_writes = Transfers(); }
