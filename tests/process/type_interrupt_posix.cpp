#include <fcntl.h>
#include <process/type_interrupt.h>
#include <unistd.h>

#include <cstdlib>

bool TypeInterrupt() {
    const int keyboard = posix_openpt(O_RDWR | O_NOCTTY);
    return setsid() != -1 && grantpt(keyboard) == 0 && unlockpt(keyboard) == 0 &&
           open(ptsname(keyboard), O_RDWR) != -1 && write(keyboard, "\3", 1) == 1;
}
