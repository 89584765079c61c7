#include <runtime/loader_entry.h>
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID);

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID processEnds) {
    if (reason == DLL_PROCESS_ATTACH) kzm_LibraryLoaded();
    if (reason == DLL_PROCESS_DETACH) kzm_LibraryUnloaded(processEnds != nullptr);
    return TRUE;
}
