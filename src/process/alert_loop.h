#pragma once
#include <platform/threads.h>

#include <cstdint>

// What an alert thread understands: this message with an alert's number or a command.
constexpr std::uint32_t kAlertMessage = 0x8000;
constexpr std::uint32_t kAlertStop = 6;
constexpr std::uint32_t kAlertNothing = 7;

using AlertHandler = void (*)(int signal);

// Serves the calling thread's queue with the six handlers, which may change meanwhile. Sets
// `started` once messages can be posted. Returns the thread's exit code: 0 if it was told to stop,
// 1 if any other message than the above ended it.
std::uint32_t ServeAlerts(const AlertHandler* handlers, platform::Handle started) noexcept;

bool InAlertHandler();  // whether the calling thread is the one that serves alerts
