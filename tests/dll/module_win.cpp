#include <dll/module.h>
#include <stdlib.h>
#include <windows.h>

void* module::Load(const char* path) { return LoadLibraryA(path); }
void module::Unload(void* handle) { FreeLibrary(static_cast<HMODULE>(handle)); }
bool module::IsLoaded(const char* path) { return GetModuleHandleA(path) != nullptr; }

void* module::Find(void* handle, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name));
}

std::string module::Output(const char* program) {
    SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
    HANDLE read, write;
    if (!CreatePipe(&read, &write, &inherit, 0)) return "no pipe";
    STARTUPINFOA start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = write;
    start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process;
    std::string command(program);
    const BOOL started = CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                        nullptr, &start, &process);
    CloseHandle(write);
    std::string text;
    if (started) {
        char buffer[256];
        for (DWORD n; ReadFile(read, buffer, sizeof buffer, &n, nullptr) && n > 0;)
            text.append(buffer, n);
        WaitForSingleObject(process.hProcess, INFINITE);
        DWORD code = 1;
        GetExitCodeProcess(process.hProcess, &code);
        if (code != 0) text = "failed: " + text;
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    } else {
        text = "cannot start";
    }
    CloseHandle(read);
    return text;
}

void module::SetVariable(const char* name, const char* value) {
    _putenv((std::string(name) + "=" + (value ? value : "")).c_str());
}
