#include <platform/platform.h>
#include <process/alert_loop.h>
#include <process/omi_AlertListener.h>

#include <cassert>
#include <chrono>
#include <csignal>
#include <thread>

KZM_DEFINE_SINGLETON(omi_AlertListener)

omi_AlertListener::omi_AlertListener() : m_handlers{}, m_threadId(0), m_handle(nullptr) {}

omi_AlertListener::~omi_AlertListener() { Disarm(); }

void omi_AlertListener::Arm() {
    if (m_threadId != 0) return;
    const platform::Handle event = platform::NewEvent();
    if (!event) return;
    m_handle = event;
    const platform::Handle thread = platform::StartThread(&Listen, this, m_threadId);
    if (!thread) return;
    platform::RaisePriority(thread);
    if (!platform::Wait(event)) return;
    platform::Close(event);
    m_handle = thread;
    platform::Post(m_threadId, {kAlertMessage, kAlertNothing, 0});
}

std::uint32_t omi_AlertListener::Listen(void* listener) noexcept {
    const auto* const self = static_cast<omi_AlertListener*>(listener);
    return ServeAlerts(self->m_handlers, self->m_handle);
}

void omi_AlertListener::Disarm() {
    assert(m_threadId != platform::ThreadId() && "Disarm called by a handler");
    if (m_threadId == 0 || m_threadId == platform::ThreadId()) return;
    while (platform::Post(m_threadId, {kAlertMessage, kAlertStop, 0}) == platform::Posted::kFull)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    platform::Wait(m_handle);
    platform::Close(m_handle);
    m_handle = nullptr;
    m_threadId = 0;
}

void omi_AlertListener::SetHandler(omi_AlertEnm alert, void (*handler)(int signal)) {
    if (alert < omi_AlertInterrupt || alert >= kAlerts) return;
    m_handlers[alert] = handler;
    if (m_threadId != 0 && alert == omi_AlertInterrupt) std::signal(SIGINT, handler);
}
