#include <alloc/KZMBasMemPoolCow.h>
#include <alloc/mem_alloc.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>

static_assert(std::is_standard_layout_v<KZMBasMemPoolCow>);
static_assert(sizeof(KZMBasMemPoolCow) == 1064);

KZM_DEFINE_SINGLETON(KZMBasMemPoolCow)

KZMBasMemPoolCow::KZMBasMemPoolCow() : m_tracking(0), m_reserved{}, m_figures{} {}

void* KZMBasMemPoolCow::Alloc(unsigned size) {
    void* const block = mem_OperatorNewThrow(size);
    if (Tracking()) {
        Figures& figures = m_figures[std::bit_width(size)];
        ++figures.m_taken;
        figures.m_bytesTaken += size;
    }
    return block;
}

void KZMBasMemPoolCow::Free(void* block, unsigned size) {
    if (block && Tracking()) {
        Figures& figures = m_figures[std::bit_width(size)];
        ++figures.m_givenBack;
        figures.m_bytesGivenBack += size;
    }
    mem_Free(block);
}

const KZMBasMemPoolCow::Figures& KZMBasMemPoolCow::OfSizeClass(unsigned sizeClass) const {
    return m_figures[std::min(sizeClass, kSizeClasses - 1)];
}

KZMBasMemPoolCow::Figures KZMBasMemPoolCow::Total() const {
    Figures total{};
    for (const Figures& each : m_figures) {
        total.m_taken += each.m_taken;
        total.m_givenBack += each.m_givenBack;
        total.m_bytesTaken += each.m_bytesTaken;
        total.m_bytesGivenBack += each.m_bytesGivenBack;
    }
    return total;
}

void KZMBasMemPoolCow::ResetFigures() { std::fill(m_figures, m_figures + kSizeClasses, Figures{}); }

void KZMBasMemPoolCow::FinalizeIfCreated() {
    if (omi_SingletonBase<KZMBasMemPoolCow>::Instance()) Finalize();
}
