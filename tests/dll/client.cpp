#include <coreutils/KZMBasSystemError.h>
#include <cow/cow_String.h>
#include <dll/client.h>
#include <errors/KZMBasUtlReadError.h>
#include <process/omi_AlertListener.h>

struct OwnError : ClientError {};

client::View client::There() { return Here(); }
void* client::Allocate63(unsigned size) { return KZMBasSrmAllocator<63>::allocate(size); }
void client::Deallocate63(void* block) { KZMBasSrmAllocator<63>::deallocate(block); }

client::Table* client::NewTable(int key, int value) {
    const std::pair<int, int> entry(key, value);
    return new Table(&entry, &entry + 1);
}

void client::ThrowReadError(int code) {
    KZMBasUtlReadError(KZMBasSystemError(code)).Throw("client", 1);
}
void client::ThrowOwn() { throw OwnError(); }
void client::Call(void (*function)()) {
    const cow_String unwound("destroyed on the way");
    function();
}

extern "C" KZM_API void kzm_client_arm() { omi_Singleton<omi_AlertListener>::Instance().Arm(); }
extern "C" KZM_API void kzm_client_disarm() {
    omi_Singleton<omi_AlertListener>::Instance().Disarm();
}
