#include <files/KZMBasFilStracePhase.h>
#include <runtime/mem_AllocationOperators.h>

KZM_DEFINE(KZMBasAtiGlobalSingleton<KZMBasFilStracePhase::Impl>)

struct KZMBasFilStracePhase::Impl::Phase : mem_AllocationOperators {
    Phase(const std::string& path, Phase* outer) : m_path(path), m_outer(outer) {}
    std::string m_path;
    Phase* m_outer;
};

KZMBasFilStracePhase::Impl::Impl() : m_innermost(nullptr) {}

KZMBasFilStracePhase::Impl::~Impl() {
    while (m_innermost) End();
}

void KZMBasFilStracePhase::Impl::Begin(const char* name) {
    std::string path = Path();
    if (m_innermost) path += '/';
    if (name) path += name;
    m_innermost = new Phase(path, m_innermost);
}

void KZMBasFilStracePhase::Impl::End() {
    Phase* const ended = m_innermost;
    if (!ended) return;
    m_innermost = ended->m_outer;
    delete ended;
}

std::string KZMBasFilStracePhase::Impl::Path() const {
    return m_innermost ? m_innermost->m_path : std::string();
}

KZMBasFilStracePhase::KZMBasFilStracePhase(const char* name) { Impl::Instance().Begin(name); }
KZMBasFilStracePhase::~KZMBasFilStracePhase() { Impl::Instance().End(); }
std::string KZMBasFilStracePhase::Path() { return Impl::Instance().Path(); }
