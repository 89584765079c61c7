#include <process/omn_FPESetting.h>

#include <cstdio>
#include <cstdlib>

int main() {
    const char* const value = std::getenv("KVL_IGNORE_FPE");
    std::fputs(value ? value : "unset", stdout);
    std::fputs(omn_currentFPEState().ignored ? " ignored" : " obeyed", stdout);
}
