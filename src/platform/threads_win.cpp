#include <platform/threads.h>
#include <process.h>
#include <windows.h>

#include <new>

namespace platform {
namespace {

struct Start {
    ThreadFunction run;
    void* argument;
    HMODULE module;
};

// A thread cannot leave a module that is being unloaded, so it holds one reference to it and gives
// it back together with itself. Nothing here may need a destructor.
unsigned __stdcall Main(void* memory) {
    const Start start = *static_cast<Start*>(memory);
    ::operator delete(memory);
    const DWORD code = start.run(start.argument);
    FreeLibraryAndExitThread(start.module, code);
}

}  // namespace

Handle NewEvent() { return CreateEventW(nullptr, FALSE, FALSE, nullptr); }

void Signal(Handle event) { SetEvent(event); }

Handle StartThread(ThreadFunction run, void* argument, std::uint32_t& id) {
    void* const memory = ::operator new(sizeof(Start), std::nothrow);
    if (!memory) return nullptr;
    auto* const start = ::new (memory) Start{run, argument, nullptr};
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                           reinterpret_cast<const wchar_t*>(&Main), &start->module)) {
        const HMODULE module = start->module;
        unsigned number;
        if (const auto thread = _beginthreadex(nullptr, 0, &Main, memory, 0, &number)) {
            id = number;
            return reinterpret_cast<Handle>(thread);
        }
        FreeLibrary(module);
    }
    ::operator delete(memory);
    return nullptr;
}

void RaisePriority(Handle thread) { SetThreadPriority(thread, THREAD_PRIORITY_HIGHEST); }

bool Wait(Handle handle) { return WaitForSingleObject(handle, INFINITE) != WAIT_FAILED; }

std::uint32_t ExitCode(Handle thread) {
    DWORD code = 0;
    GetExitCodeThread(thread, &code);
    return code;
}

void Close(Handle handle) { CloseHandle(handle); }

void MakeQueue() {
    MSG message;
    PeekMessageW(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE);
}

bool NextMessage(Message& message) {
    MSG next;
    if (GetMessageW(&next, nullptr, 0, 0) <= 0) return false;
    message = {next.message, static_cast<std::uint32_t>(next.wParam),
               static_cast<std::uint32_t>(next.lParam)};
    return true;
}

Posted Post(std::uint32_t threadId, const Message& message) {
    if (PostThreadMessageW(threadId, message.number, message.first,
                           static_cast<LPARAM>(message.second)))
        return Posted::kYes;
    return GetLastError() == ERROR_NOT_ENOUGH_QUOTA ? Posted::kFull : Posted::kNoQueue;
}

}  // namespace platform
