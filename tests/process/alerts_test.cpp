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
#include <string>
#include <thread>

// What a listener whose thread could not be made keeps of it, by contract.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:platform::NewEvent"; }

namespace {

constexpr omi_AlertEnm kAll[] = {omi_AlertInterrupt, omi_AlertTerminate, omi_AlertSuspend,
                                 omi_AlertContinue,  omi_AlertUser1,     omi_AlertUser2};
using Handler = void (*)(int);
std::string g_calls;
std::atomic<unsigned> g_count{0};

omi_AlertListener& Listener() { return omi_Singleton<omi_AlertListener>::Instance(); }
void Note(int signal) {
    g_calls += std::to_string(signal) + (platform::ThreadId() == Listener().ThreadId() ? " " : "?");
}
void Count(int) { ++g_count; }

// The C runtime's handler of the interrupt signal.
Handler Interrupt() {
    const Handler handler = std::signal(SIGINT, SIG_DFL);
    std::signal(SIGINT, handler);
    return handler;
}

class Alerts : public testing::Test {
protected:
    Alerts() { std::signal(SIGINT, SIG_DFL); }  // started in the background it may be ignored
    ~Alerts() override { omi_SingletonBase<omi_AlertListener>::Finalize(); }
    omi_AlertListener& m_listener = Listener();
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
    EXPECT_EQ(g_calls, "2 15 20 18 10 12 10 ");
}

TEST_F(Alerts, ArmingAndDisarmingMayBeRepeatedAndKeepsTheHandlers) {
    g_count = 0;
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
        EXPECT_TRUE(m_listener.ThreadId() == 0 && g_count == round);
        old = trigger;
    }
}

TEST_F(Alerts, OnlyWhileArmedTheInterruptHandlerServesCtrlC) {
    for (const Handler before : {Handler(), &Count}) {
        m_listener.SetHandler(omi_AlertInterrupt, before);
        EXPECT_EQ(Interrupt(), SIG_DFL);
        m_listener.Arm();
        m_listener.SetHandler(omi_AlertTerminate, &Note);
        EXPECT_EQ(Interrupt(), before ? before : SIG_DFL);
        for (const Handler atOnce : {&Note, Handler(), &Count}) {
            m_listener.SetHandler(omi_AlertInterrupt, atOnce);
            EXPECT_EQ(Interrupt(), atOnce ? atOnce : SIG_DFL);
        }
        m_listener.Disarm();
        EXPECT_EQ(Interrupt(), SIG_DFL);
    }
}

TEST_F(Alerts, CtrlCInAConsoleReachesTheHandler) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto interrupt = [this] {
        m_listener.SetHandler(omi_AlertInterrupt, [](int signal) { std::_Exit(40 + signal); });
        m_listener.Arm();
        if (TypeInterrupt()) std::this_thread::sleep_for(std::chrono::seconds(10));
    };
    EXPECT_EXIT(interrupt(), testing::ExitedWithCode(42), "");
}

TEST_F(Alerts, OneWhoseHandlerWasTakenAwayEndsTheProcessAndAHandlerMay) {
    const auto alert = [this](Handler handler) {
        for (const Handler each : {&Count, handler}) m_listener.SetHandler(omi_AlertUser2, each);
        m_listener.Arm();
        omi_AlertTrigger(m_listener).Alert(omi_AlertUser2);
        m_listener.Disarm();
    };
    EXPECT_DEATH(alert(nullptr), "");
    EXPECT_EXIT(alert([](int) { std::exit(5); }), testing::ExitedWithCode(5), "");
}

TEST_F(Alerts, NoneIsLostThatSeveralThreadsPostWhileArmed) {
    g_count = 0;
    for (const omi_AlertEnm alert : kAll) m_listener.SetHandler(alert, &Count);
    pthread_barrier_t turn;
    ASSERT_EQ(pthread_barrier_init(&turn, nullptr, 4), 0);
    const auto post = [&] {
        for (unsigned round = 1; round <= 2000; ++round) {
            pthread_barrier_wait(&turn);
            for (const omi_AlertEnm alert : kAll) omi_AlertTrigger(m_listener).Alert(alert);
            pthread_barrier_wait(&turn);
        }
    };
    std::thread posters[] = {std::thread(post), std::thread(post), std::thread(post)};
    for (unsigned round = 1; round <= 2000; ++round) {
        m_listener.Arm();
        for (int turns = 0; turns < 2; ++turns) pthread_barrier_wait(&turn);
        m_listener.Disarm();
        EXPECT_EQ(g_count, round * 18);
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

// The thread's part alone: a listener stays armed whatever ended it, and what posts other messages
// to the library's thread is not at hand.
TEST(AlertLoop, EndsAtTheStopCommandOrAtAForeignMessageAndTakesNoMore) {
    const auto listen = [](void* started) noexcept {
        const AlertHandler none[6] = {};
        return ServeAlerts(none, started);
    };
    const platform::Handle started = platform::NewEvent();
    const std::pair<std::uint32_t, std::uint32_t> cases[] = {
        {kAlertMessage, 0}, {0x8001, 1}, {0x400, 1}, {0x12, 1}};
    std::uint32_t ids[4];
    platform::Handle threads[4];
    for (int i = 0; i < 4; ++i) {
        threads[i] = platform::StartThread(listen, started, ids[i]);
        platform::Wait(started);
    }
    mem_TBThreadLock(true);  // the first one waits with its first message in hand
    for (int i = 0; i < 4; ++i) platform::Post(ids[i], {cases[i].first, kAlertStop, 0});
    for (const long failAt : {0, 1, 1, 1}) {  // messages that end with their queue
        host_heap::Watch(failAt);
        EXPECT_NE(platform::Post(ids[0], {kAlertMessage, 0, 0}), platform::Posted::kNoQueue);
        host_heap::Unwatch();
    }
    mem_TBThreadLock(false);
    for (int i = 0; i < 4; ++i) {
        platform::Wait(threads[i]);
        EXPECT_EQ(platform::ExitCode(threads[i]), cases[i].second) << i;
        EXPECT_EQ(platform::Post(ids[i], {kAlertMessage, 0, 0}), platform::Posted::kNoQueue);
        platform::Close(threads[i]);
    }
    platform::Close(started);
}

}  // namespace
