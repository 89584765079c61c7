#include <runtime/KZMBasShared.h>
#include <stdio.h>
#include <stdlib.h>

int main(void) {
    KZMBasShared_initializeC();
    puts(getenv("KVL_IGNORE_FPE"));
    KZMBasShared_finalizeC();
    return 0;
}
