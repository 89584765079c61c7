#include <process/KZMBasOmniProcessInfo.h>
#include <process/omn_FPESetting.h>

#include <cstdio>
#include <cstdlib>

int main() {
    KZMBasOmniProcessInfo::Initialize();
    const char* const value = std::getenv("KVL_IGNORE_FPE");
    std::printf("%d %s %s\n", KZMBasOmniProcessInfo::Rank(), value ? value : "unset",
                omn_currentFPEState().ignored ? "ignored" : "obeyed");
}
