#include <process/omi_AlertListener.h>

KZM_DEFINE_SINGLETON(omi_AlertListener)

omi_AlertListener::omi_AlertListener() : m_handlers{}, m_threadId(0), m_handle(nullptr) {}

omi_AlertListener::~omi_AlertListener() {}

void omi_AlertListener::SetHandler(omi_AlertEnm alert, void (*handler)(int signal)) {
    if (alert >= omi_AlertInterrupt && alert < kAlerts) m_handlers[alert] = handler;
}
