#include <process/KZMBasOmniProcessInfo.h>
#include <process/omn_FPESetting.h>

#include <cstdio>
#include <cstdlib>

int main() {
    KZMBasOmniProcessInfo::Initialize();
    std::printf("%d %s %s\n", KZMBasOmniProcessInfo::Rank(), std::getenv("KVL_IGNORE_FPE"),
                omn_currentFPEState().ignored ? "ignored" : "obeyed");
}
