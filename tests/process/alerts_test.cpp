#include <alloc/mem_TBThreadLock.h>
#include <gtest/gtest.h>
#include <platform/platform.h>
#include <process/alert_loop.h>
#include <process/omi_AlertListener.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <mutex>
#include <thread>
#include <vector>

#include "support/memory_failure.h"

// What a listener whose thread could not be made keeps of it, by contract.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:platform::NewEvent"; }

namespace {

constexpr omi_AlertEnm kAll[] = {omi_AlertInterrupt, omi_AlertTerminate, omi_AlertSuspend,
                                 omi_AlertContinue,  omi_AlertUser1,     omi_AlertUser2};

std::mutex g_lock;
std::vector<int> g_signals;            // as they reached the handler
std::vector<std::uint32_t> g_threads;  // on which
std::atomic<unsigned> g_count{0};

void Note(int signal) {
    const std::lock_guard lock(g_lock);
    g_signals.push_back(signal);
    g_threads.push_back(platform::ThreadId());
}
void Count(int) { ++g_count; }
void CountTen(int) { g_count += 10; }

using Handler = void (*)(int);

class Alerts : public testing::Test {
protected:
    Alerts() : m_listener(omi_Singleton<omi_AlertListener>::Instance()) {
        g_signals.clear();
        g_threads.clear();
        g_count = 0;
    }
    ~Alerts() override {
        omi_SingletonBase<omi_AlertListener>::Finalize();
        std::signal(SIGINT, SIG_DFL);
    }
    void SetAll(Handler handler) {
        for (const omi_AlertEnm alert : kAll) m_listener.SetHandler(alert, handler);
    }
    // The C runtime's handler of the interrupt signal.
    static Handler Interrupt() {
        const Handler handler = std::signal(SIGINT, SIG_DFL);
        std::signal(SIGINT, handler);
        return handler;
    }

    omi_AlertListener& m_listener;
};

TEST_F(Alerts, EachReachesItsHandlerAsAUnixSignalOnTheListenerThreadInOrder) {
    SetAll(&Note);
    m_listener.Arm();
    const omi_AlertTrigger trigger(m_listener);
    EXPECT_NE(trigger.ThreadId(), 0u);
    EXPECT_NE(trigger.ThreadId(), platform::ThreadId());
    for (const omi_AlertEnm alert : kAll) trigger.Alert(alert);
    for (const int command : {7, 8, -1}) trigger.Alert(static_cast<omi_AlertEnm>(command));
    trigger.Alert(omi_AlertUser1);
    m_listener.Disarm();
    EXPECT_EQ(g_signals, (std::vector<int>{2, 15, 20, 18, 10, 12, 10}));
    EXPECT_EQ(g_threads, std::vector<std::uint32_t>(7, trigger.ThreadId()));
}

TEST_F(Alerts, ArmingAndDisarmingMayBeRepeatedAndKeepsTheHandlers) {
    m_listener.Disarm();
    m_listener.SetHandler(omi_AlertUser2, &Count);
    m_listener.SetHandler(static_cast<omi_AlertEnm>(6), &Count);
    m_listener.SetHandler(static_cast<omi_AlertEnm>(-1), &Count);
    omi_AlertTrigger old(0);
    for (unsigned round = 1; round <= 3; ++round) {
        old.Alert(omi_AlertUser2);  // nobody is there any more
        m_listener.Arm();
        const omi_AlertTrigger trigger(m_listener);
        m_listener.Arm();
        EXPECT_EQ(m_listener.ThreadId(), trigger.ThreadId());
        trigger.Alert(omi_AlertUser2);
        m_listener.Disarm();
        EXPECT_EQ(m_listener.ThreadId(), 0u);
        EXPECT_EQ(g_count, round);
        old = trigger;
    }
}

TEST_F(Alerts, AListenerWhoseThreadWasStoppedStaysMarkedArmedUntilDisarmed) {
    m_listener.Arm();
    const omi_AlertTrigger trigger(m_listener);
    trigger.Alert(static_cast<omi_AlertEnm>(kAlertStop));
    m_listener.Arm();
    EXPECT_EQ(m_listener.ThreadId(), trigger.ThreadId());
    m_listener.Disarm();
    EXPECT_EQ(m_listener.ThreadId(), 0u);
}

TEST_F(Alerts, HandlersRunInsideTheThreadLock) {
    m_listener.SetHandler(omi_AlertUser1, &Count);
    m_listener.Arm();
    mem_TBThreadLock(true);
    omi_AlertTrigger(m_listener).Alert(omi_AlertUser1);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(g_count, 0u);
    mem_TBThreadLock(false);
    m_listener.Disarm();
    EXPECT_EQ(g_count, 1u);
}

TEST_F(Alerts, OnlyWhileArmedTheInterruptHandlerServesCtrlC) {
    struct {
        Handler handler;
        Handler whileArmed;
    } const cases[] = {{&Count, &Count}, {&CountTen, &CountTen}, {nullptr, SIG_DFL}};
    const Handler before = Interrupt();
    for (const auto& [handler, whileArmed] : cases) {
        m_listener.SetHandler(omi_AlertInterrupt, handler);
        EXPECT_EQ(Interrupt(), before);
        m_listener.Arm();
        EXPECT_EQ(Interrupt(), whileArmed);
        if (handler) std::raise(SIGINT);
        m_listener.Disarm();
        EXPECT_EQ(Interrupt(), SIG_DFL);
    }
    EXPECT_EQ(g_count, 11u);
    m_listener.Arm();
    m_listener.SetHandler(omi_AlertInterrupt, &Count);
    EXPECT_EQ(Interrupt(), &Count);
    m_listener.SetHandler(omi_AlertTerminate, &CountTen);
    EXPECT_EQ(Interrupt(), &Count);
    std::raise(SIGINT);
    omi_AlertTrigger(m_listener).Alert(omi_AlertInterrupt);
    m_listener.Disarm();
    EXPECT_EQ(g_count, 13u);
}

TEST_F(Alerts, NoneIsLostThatSeveralThreadsPostWhileArmed) {
    SetAll(&Count);
    constexpr unsigned kRounds = 300, kThreads = 3, kEach = 20;
    for (unsigned round = 0; round < kRounds; ++round) {
        m_listener.Arm();
        std::vector<std::thread> posters;
        for (unsigned n = 0; n < kThreads; ++n)
            posters.emplace_back([trigger = omi_AlertTrigger(m_listener), n] {
                for (unsigned i = 0; i < kEach; ++i) trigger.Alert(kAll[(n + i) % 6]);
            });
        for (std::thread& poster : posters) poster.join();
        m_listener.Disarm();
        ASSERT_EQ(g_count, (round + 1) * kThreads * kEach);
    }
}

TEST_F(Alerts, WithoutMemoryTheListenerIsNotArmedOrOneAlertGetsThrough) {
    m_listener.SetHandler(omi_AlertUser1, &Count);
    for (long failAt = 1; failAt < 10; ++failAt) {
        host_heap::Watch(failAt);
        m_listener.Arm();
        if (m_listener.ThreadId() != 0) omi_AlertTrigger(m_listener).Alert(omi_AlertUser1);
        m_listener.Disarm();
        host_heap::Unwatch();
    }
    m_listener.Arm();
    omi_AlertTrigger(m_listener).Alert(omi_AlertUser1);
    m_listener.Disarm();
    EXPECT_GE(g_count, 7u);
}

// The loop in threads of this program, where their ends can be seen.
TEST(AlertLoop, EndsWithTheStopCommandOrWithAMessageThatIsNoAlert) {
    struct Loop {
        const AlertHandler handlers[6];
        platform::Handle started;
    };
    const struct {
        platform::Message message;
        std::uint32_t exitCode;
    } cases[] = {{{0x8000, 6, 0}, 0},
                 {{0x8001, 4, 0}, 1},
                 {{platform::kQuitMessage, 6, 0}, 1},
                 {{0x400, 6, 0}, 1}};
    for (const auto& [last, exitCode] : cases) {
        SCOPED_TRACE(last.number);
        Loop loop{{nullptr, nullptr, nullptr, nullptr, &Count, nullptr}, platform::NewEvent()};
        std::uint32_t id = 0;
        const platform::Handle thread = platform::StartThread(
            [](void* argument) noexcept {
                const auto* const self = static_cast<const Loop*>(argument);
                return ServeAlerts(self->handlers, self->started);
            },
            &loop, id);
        ASSERT_TRUE(platform::Wait(loop.started));
        platform::Close(loop.started);
        g_count = 0;
        for (const platform::Message& message :
             {platform::Message{0x8000, 7, 0}, {0x8000, 0xFFFFFFFF, 0}, {0x8000, 4, 0}, last})
            EXPECT_EQ(platform::Post(id, message), platform::Posted::kYes);
        EXPECT_TRUE(platform::Wait(thread));
        EXPECT_EQ(platform::ExitCode(thread), exitCode);
        EXPECT_EQ(platform::Post(id, {0x8000, 4, 0}), platform::Posted::kNoQueue);
        platform::Close(thread);
        EXPECT_EQ(g_count, 1u);
    }
}

}  // namespace
