#include <alloc/mem_TBThreadLock.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <platform/platform.h>
#include <process/alert_loop.h>
#include <process/omi_AlertListener.h>
#include <process/type_interrupt.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <vector>

// What a listener whose thread could not be made keeps of it, by contract.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:platform::NewEvent"; }

namespace {

constexpr omi_AlertEnm kAll[] = {omi_AlertInterrupt, omi_AlertTerminate, omi_AlertSuspend,
                                 omi_AlertContinue,  omi_AlertUser1,     omi_AlertUser2};
using Handler = void (*)(int);
std::vector<std::pair<int, std::uint32_t>> g_calls;  // signal and thread
std::atomic<unsigned> g_count{0};

void Note(int signal) { g_calls.emplace_back(signal, platform::ThreadId()); }
void Count(int) { ++g_count; }
void CountTen(int) { g_count += 10; }

// The C runtime's handler of the interrupt signal.
Handler Interrupt() {
    const Handler handler = std::signal(SIGINT, SIG_DFL);
    std::signal(SIGINT, handler);
    return handler;
}

class Alerts : public testing::Test {
protected:
    Alerts() : m_listener(omi_Singleton<omi_AlertListener>::Instance()) { g_count = 0; }
    ~Alerts() override { omi_SingletonBase<omi_AlertListener>::Finalize(); }
    omi_AlertListener& m_listener;
};

TEST_F(Alerts, EachReachesItsHandlerAsAUnixSignalOnTheListenerThreadInOrder) {
    for (const omi_AlertEnm alert : kAll) m_listener.SetHandler(alert, &Note);
    m_listener.Arm();
    const omi_AlertTrigger trigger(m_listener);
    mem_TBThreadLock(true);  // until then no handler runs
    for (const omi_AlertEnm alert : kAll) trigger.Alert(alert);
    for (const int command : {7, 8, -1, 4}) trigger.Alert(static_cast<omi_AlertEnm>(command));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(g_calls.empty());
    mem_TBThreadLock(false);
    m_listener.Disarm();
    std::vector<std::pair<int, std::uint32_t>> expected;
    for (const int signal : {2, 15, 20, 18, 10, 12, 10})
        expected.emplace_back(signal, trigger.ThreadId());
    EXPECT_EQ(g_calls, expected);
}

TEST_F(Alerts, ArmingAndDisarmingMayBeRepeatedAndKeepsTheHandlers) {
    m_listener.Disarm();
    for (const int alert : {5, 6, -1})
        m_listener.SetHandler(static_cast<omi_AlertEnm>(alert), &Count);
    omi_AlertTrigger old(0);
    for (unsigned round = 1; round <= 3; ++round) {
        old.Alert(omi_AlertUser2);  // nobody is there any more
        m_listener.Arm();
        const omi_AlertTrigger trigger(m_listener);
        trigger.Alert(omi_AlertUser2);
        trigger.Alert(static_cast<omi_AlertEnm>(kAlertStop));  // armed all the same
        m_listener.Arm();
        EXPECT_EQ(m_listener.ThreadId(), trigger.ThreadId());
        m_listener.Disarm();
        EXPECT_EQ(m_listener.ThreadId(), 0u);
        EXPECT_EQ(g_count, round);
        old = trigger;
    }
}

TEST_F(Alerts, OnlyWhileArmedTheInterruptHandlerServesCtrlC) {
    m_listener.SetHandler(omi_AlertTerminate, &CountTen);
    for (const Handler before : {Handler(), &Count}) {
        m_listener.SetHandler(omi_AlertInterrupt, before);
        EXPECT_EQ(Interrupt(), SIG_DFL);
        m_listener.Arm();
        EXPECT_EQ(Interrupt(), before ? before : SIG_DFL);
        for (const Handler atOnce : {&CountTen, Handler(), &Count}) {
            m_listener.SetHandler(omi_AlertInterrupt, atOnce);
            EXPECT_EQ(Interrupt(), atOnce ? atOnce : SIG_DFL);
        }
        std::raise(SIGINT);
        omi_AlertTrigger(m_listener).Alert(omi_AlertInterrupt);
        m_listener.Disarm();
        EXPECT_EQ(Interrupt(), SIG_DFL);
    }
    EXPECT_EQ(g_count, 4u);
}

TEST_F(Alerts, CtrlCInAConsoleReachesTheHandler) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto interrupt = [this] {
        m_listener.SetHandler(omi_AlertInterrupt, [](int signal) { g_count = 40 + signal; });
        m_listener.Arm();
        if (!TypeInterrupt()) std::exit(1);
        for (int i = 0; i < 1000 && g_count == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::exit(static_cast<int>(g_count));
    };
    EXPECT_EXIT(interrupt(), testing::ExitedWithCode(42), "");
    GTEST_FLAG_SET(death_test_style, "fast");
}

TEST_F(Alerts, OneWhoseHandlerWasTakenAwayEndsTheProcess) {
    m_listener.SetHandler(omi_AlertUser2, &Count);
    m_listener.SetHandler(omi_AlertUser2, nullptr);
    const auto alert = [this] {
        m_listener.Arm();
        omi_AlertTrigger(m_listener).Alert(omi_AlertUser2);
        m_listener.Disarm();
    };
    EXPECT_DEATH(alert(), "");
}

TEST_F(Alerts, NoneIsLostThatSeveralThreadsPostWhileArmed) {
    constexpr unsigned kRounds = 2000;
    for (const omi_AlertEnm alert : kAll) m_listener.SetHandler(alert, &Count);
    pthread_barrier_t turn;
    ASSERT_EQ(pthread_barrier_init(&turn, nullptr, 4), 0);
    std::vector<std::thread> posters;
    for (unsigned n = 0; n < 3; ++n)
        posters.emplace_back([this, &turn, n] {
            for (unsigned round = 0; round < kRounds; ++round) {
                pthread_barrier_wait(&turn);
                const omi_AlertTrigger trigger(m_listener);
                for (unsigned i = 0; i < 10; ++i) trigger.Alert(kAll[(n + i) % 6]);
                pthread_barrier_wait(&turn);
            }
        });
    for (unsigned round = 1; round <= kRounds; ++round) {
        m_listener.Arm();
        pthread_barrier_wait(&turn);
        pthread_barrier_wait(&turn);
        m_listener.Disarm();
        EXPECT_EQ(g_count, round * 30);
    }
    for (std::thread& poster : posters) poster.join();
    pthread_barrier_destroy(&turn);
}

TEST_F(Alerts, WithoutMemoryTheListenerIsNotArmedOrTheAlertGetsThrough) {
    m_listener.SetHandler(omi_AlertUser1, &Count);
    for (long failAt = 1; failAt < 10; ++failAt) {
        g_count = 0;
        host_heap::Watch(failAt);
        m_listener.Arm();
        const bool armed = m_listener.ThreadId() != 0;
        omi_AlertTrigger(m_listener).Alert(omi_AlertUser1);
        m_listener.Disarm();
        host_heap::Unwatch();
        EXPECT_EQ(g_count, armed ? 1u : 0u);
        EXPECT_TRUE(armed || failAt <= 2);
    }
}

}  // namespace
