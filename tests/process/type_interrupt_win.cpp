#include <process/type_interrupt.h>
#include <windows.h>

bool TypeInterrupt() {
    FreeConsole();
    return AllocConsole() && GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
}
