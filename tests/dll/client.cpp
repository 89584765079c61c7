#include <coreutils/KZMBasSystemError.h>
#include <dll/client.h>
#include <errors/KZMBasUtlReadError.h>
#include <errors/KZMBasUtlVersion.h>
#include <runtime/KZMBas_SingletonRegistry.h>
#include <runtime/rgx_ReCompileCache.h>

namespace {
cow_String* g_kept = nullptr;

struct OwnError : ClientError {};
}  // namespace

client::View client::Look() {
    return {&omi_Singleton<KZMBasUtlVersion>::Instance(),
            &omi_Singleton<KZMBas_SingletonRegistry>::Instance(),
            &KZMBasAtiGlobalSingleton<rgx_ReCompileCache>::Instance(),
            KZMBasSrmAllocator<7>::GetPool(), KZMBasSrmAllocator<63>::GetPool()};
}

void client::SetPool63(KZMBasCamPool* pool) { KZMBasSrmAllocator<63>::SetPool(pool); }
void* client::Allocate63(unsigned size) { return KZMBasSrmAllocator<63>::allocate(size); }
void client::Deallocate63(void* block) { KZMBasSrmAllocator<63>::deallocate(block); }

void client::Keep(const cow_String& text) {
    delete g_kept;
    g_kept = new cow_String(text);
}
const cow_String& client::Kept() { return *g_kept; }

omi_IntTable<int, KZMBasSrmAllocator<7>>* client::NewTable(int key, int value) {
    auto* const table = new omi_IntTable<int, KZMBasSrmAllocator<7>>;
    table->Insert(key, value);
    return table;
}

void client::ThrowReadError(int code) {
    KZMBasUtlReadError(KZMBasSystemError(code)).Throw("client", 1);
}
void client::ThrowOwn() { throw OwnError(); }
void client::Call(void (*function)()) {
    const cow_String unwound("destroyed on the way");
    function();
}
