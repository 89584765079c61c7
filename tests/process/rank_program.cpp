#include <process/KZMBasOmniProcessInfo.h>

#include <cstdio>

int main() {
    KZMBasOmniProcessInfo::Initialize();
    std::printf("%d\n", KZMBasOmniProcessInfo::Rank());
    return KZMBasOmniProcessInfo::Rank() < 0;
}
