#pragma once
#include <kzm_export.h>
#include <runtime/KZMBasAtiGlobalSingleton.h>

// Compiled regular expressions by the text of their pattern, so that a pattern is compiled once in
// a process. The cache knows nothing of the engine: it keeps what Store is given and hands it to
// the release function, if there is one, when it ends. A null pattern is the empty one. All
// operations may be called from several threads.
class KZM_API rgx_ReCompileCache : public KZMBasAtiGlobalSingleton<rgx_ReCompileCache> {
public:
    // Empty.
    rgx_ReCompileCache();
    ~rgx_ReCompileCache();  // releases everything

    // Null if the pattern is not known.
    const void* Find(const char* pattern) const;

    // Takes ownership and returns what the cache holds for the pattern: of two threads that compile
    // the same pattern at once, the second has its work released and gets the first one's. Released
    // also if memory runs out.
    const void* Store(const char* pattern, void* compiled, void (*release)(void*));

    // Patterns that are kept.
    int Size() const;

private:
    struct Table;
    Table* m_table;  // owned
};
KZM_DECLARE_GLOBAL_SINGLETON(rgx_ReCompileCache)
