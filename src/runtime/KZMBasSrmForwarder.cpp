#include <runtime/KZMBasSrmForwarder.h>

#include <cstdio>

namespace {

void KZMBasSrmDoNothingVoid() { std::fputs("KZMBasSrmDoNothingVoid\n", stdout); }

void KZMBasSrmDoNothingPhase(const char*) { std::fputs("KZMBasSrmDoNothingPhase\n", stdout); }

}  // namespace

KZMBasCamPool* KZMBasSrmGetPoolNOOP(srm_ResourceEnums) {
    return reinterpret_cast<KZMBasCamPool*>(KZMBasSrmNoPool);
}

// Set before any code runs, so that static constructors of clients may install a manager.
constinit KZMBasSrmForwarder::GetPoolFunction KZMBasSrmForwarder::pGetPool = KZMBasSrmGetPoolNOOP;
constinit KZMBasSrmForwarder::SummaryFunction KZMBasSrmForwarder::pMemorySummary =
    KZMBasSrmDoNothingVoid;
constinit KZMBasSrmForwarder::PhaseSummaryFunction KZMBasSrmForwarder::pMemorySummaryPhase =
    KZMBasSrmDoNothingPhase;

KZMBasCamPool* KZMBasSrmForwarder::GetPool(srm_ResourceEnums resource) {
    return pGetPool(resource);
}

void KZMBasSrmForwarder::MemorySummary() { pMemorySummary(); }

void KZMBasSrmForwarder::MemorySummary(const char* phase) { pMemorySummaryPhase(phase); }

void KZMBasSrmForwarder::Initialize() {}

void KZMBasSrmForwarder::SetPtrGetPool(GetPoolFunction getPool) { pGetPool = getPool; }

void KZMBasSrmForwarder::SetPtrMemorySummary(SummaryFunction summary) { pMemorySummary = summary; }

void KZMBasSrmForwarder::SetPtrMemorySummary(PhaseSummaryFunction summary) {
    pMemorySummaryPhase = summary;
}
