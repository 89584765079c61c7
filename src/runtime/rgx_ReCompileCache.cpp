#include <coreutils/atr_StringBase.h>
#include <runtime/mem_AllocationOperators.h>
#include <runtime/rgx_ReCompileCache.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>

KZM_DEFINE(KZMBasAtiGlobalSingleton<rgx_ReCompileCache>)

struct rgx_ReCompileCache::Table : mem_AllocationOperators {
    using Compiled = std::unique_ptr<void, void (*)(void*)>;

    std::mutex m_mutex;
    std::map<std::string, Compiled, std::less<>> m_byPattern;
};

rgx_ReCompileCache::rgx_ReCompileCache() : m_table(new Table) {}
rgx_ReCompileCache::~rgx_ReCompileCache() { delete m_table; }

const void* rgx_ReCompileCache::Find(const char* pattern) const {
    const std::lock_guard lock(m_table->m_mutex);
    const auto found = m_table->m_byPattern.find(atr_StringBase::OrEmpty(pattern));
    return found == m_table->m_byPattern.end() ? nullptr : found->second.get();
}

const void* rgx_ReCompileCache::Store(const char* pattern, void* compiled, void (*release)(void*)) {
    Table::Compiled owned(
        compiled, release ? release : [](void*) {});
    const std::lock_guard lock(m_table->m_mutex);
    return m_table->m_byPattern.try_emplace(atr_StringBase::OrEmpty(pattern), std::move(owned))
        .first->second.get();
}

int rgx_ReCompileCache::Size() const {
    const std::lock_guard lock(m_table->m_mutex);
    return static_cast<int>(m_table->m_byPattern.size());
}
