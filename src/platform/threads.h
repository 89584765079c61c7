#pragma once
#include <cstdint>

// Threads with a queue of messages, and events to start them with. threads_win.cpp and
// threads_posix.cpp each define all of it.
namespace platform {

// An event or a thread; null is neither.
using Handle = void*;

// An event that is not set; a wait for it ends by taking the setting back. Null on failure.
Handle NewEvent();
void Signal(Handle event);

// Runs `run(argument)` in a thread of its own and tells its identifier, which is never 0. Null on
// failure; `id` is then as it was. On Windows the thread keeps the module that this code lies in
// loaded; elsewhere it must be waited for before the module is unloaded.
using ThreadFunction = std::uint32_t (*)(void* argument) noexcept;
Handle StartThread(ThreadFunction run, void* argument, std::uint32_t& id);

// To the highest of the normal levels, where the system lets anybody do that.
void RaisePriority(Handle thread);

// Until the event is set or the thread has ended. False if waiting is not possible.
bool Wait(Handle handle);
// What the function returned; only after Wait.
std::uint32_t ExitCode(Handle thread);
// Ends the handle; a thread goes on without it.
void Close(Handle handle);

struct Message {
    std::uint32_t number;
    std::uint32_t first, second;  // parameters
};
constexpr std::uint32_t kQuitMessage = 0x12;

// Gives the calling thread, started by StartThread, its queue. The queue ends with the thread and
// with what is in it.
void MakeQueue();
// Waits for the calling thread's next message. False if it is the quit message, or on failure.
bool NextMessage(Message& message);

enum class Posted { kYes, kNoQueue, kFull };
// Puts a message at the end of a thread's queue, from any thread, without waiting. kFull passes
// when the thread takes a message out.
Posted Post(std::uint32_t threadId, const Message& message);

}  // namespace platform
