#include <runtime/KZMBasShared.h>
#include <stdio.h>
#include <stdlib.h>

int main(void) {
    const char* value = getenv("KVL_IGNORE_FPE");
    KZMBasShared_initializeC();
    fputs(value ? value : "unset", stdout);
    KZMBasShared_finalizeC();
    fputs(" running", stdout);
    return 0;
}
