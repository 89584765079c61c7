#include <alloc/omi_SingletonRegistry.h>
#include <coreutils/KZMBasAtiThreadingModelHook.h>
#include <runtime/KZMBasAtiGlobalSingleton.h>
#include <runtime/omi_Singleton.h>
#include <support/expect_abort.h>
#include <support/memory_failure.h>
#include <support/registry_record.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

// A block of the product's heap that shows in the probe if it is lost.
using Block = std::unique_ptr<void, void (*)(void*)>;
Block NewBlock() { return Block(mem_Malloc(100), mem_Free); }

struct Settings : omi_SingletonBase<Settings> {
    static inline std::string s_seenWhileDying;
    virtual ~Settings() {  // virtual: the base is constructed before there is a dynamic type
        s_seenWhileDying = &omi_Singleton<Settings>::Instance() == this ? "itself" : "another";
    }
    Block block = NewBlock();
};

TEST(Singleton, IsMadeOnceListedWhileItLivesAndMadeAnew) {
    RegistryRecord record;
    Settings* const first = &omi_Singleton<Settings>::Instance();
    EXPECT_EQ(first, &omi_Singleton<Settings>::Instance());
    EXPECT_EQ(omi_SingletonRegistry::Instance()->Find(typeid(Settings).name()), first);
    omi_SingletonBase<Settings>::Finalize();
    EXPECT_EQ(Settings::s_seenWhileDying, "itself");
    omi_SingletonBase<Settings>::Finalize();  // there is none: only the name is taken out again
    omi_Singleton<Settings>::Instance();
    omi_SingletonBase<Settings>::Finalize();
    const std::string name = "(anonymous namespace)::Settings ";
    EXPECT_EQ(record.Take(), "+" + name + "-" + name + "-" + name + "+" + name + "-" + name);
}

TEST(Singleton, MemoryFailureInCreationLeavesNone) {
    struct Session {
        ~Session() { omi_SingletonBase<Settings>::Finalize(); }
    };
    ForEveryAllocationFailure(
        [] { return Session(); }, [](auto&) { omi_Singleton<Settings>::Instance(); },
        [](auto&, bool made) {
            const void* const listed =
                omi_SingletonRegistry::Instance()->Find(typeid(Settings).name());
            EXPECT_EQ(listed != nullptr, made);
        });
}

struct Twin : omi_SingletonBase<Twin> {
    static inline int s_made = 0;
    Twin() {
        if (++s_made == 1) new Twin;
    }
};

TEST(SingletonDeathTest, AnObjectThatIsNotTheInstanceEndsTheProcess) {
    EXPECT_ABORT(omi_Singleton<Twin>::Instance());
}

int g_mutexRequests = 0;
KZMBasAtiMutex* CountedMutex() {
    ++g_mutexRequests;
    return KZMBasAtiDefaultMutex();
}
KZMBasAtiMutex* NoMutex() {
    ++g_mutexRequests;
    return nullptr;
}

struct Other : KZMBasAtiGlobalSingleton<Other> {};

struct Shared : KZMBasAtiGlobalSingleton<Shared> {
    static inline bool s_refuse = false;
    static inline std::atomic<int> s_made = 0;
    Shared() {
        Other::Instance();  // the lock that is held is recursive
        ++s_made;
        if (s_refuse) throw std::runtime_error("refused");
    }
    virtual ~Shared() { Other::Finalize(); }
    Block block = NewBlock();
    int value = 0;
};

class GlobalSingleton : public testing::Test {
protected:
    void SetUp() override {
        Shared::Finalize();
        Shared::s_made = 0;
        KZMBasAtiSetMutexFactory(CountedMutex);
        g_mutexRequests = 0;
    }
    void TearDown() override {
        Shared::Finalize();
        Other::Finalize();
        KZMBasAtiSetMutexFactory(nullptr);
        KZMBasSetFatalErrorHandler(nullptr);
    }
};

TEST_F(GlobalSingleton, ThreadsThatRaceForItGetOneObjectAndItsLock) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 1000;
    std::vector<std::thread> threads;
    std::atomic<bool> go{false};
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&go] {
            while (!go) std::this_thread::yield();
            for (int round = 0; round < kRounds; ++round) {
                Shared& shared = Shared::Instance();
                shared.Lock();
                ++shared.value;
                shared.Unlock();
            }
        });
    go = true;
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(Shared::s_made, 1);
    EXPECT_EQ(Shared::Instance().value, kThreads * kRounds);
}

TEST_F(GlobalSingleton, EveryAttemptAsksForAMutexAndTheFirstOneServes) {
    Other::Instance();
    g_mutexRequests = 0;
    Shared::s_refuse = true;
    EXPECT_THROW(Shared::Instance(), std::runtime_error);
    EXPECT_EQ(omi_SingletonRegistry::Instance()->Find(typeid(Shared).name()), nullptr);
    EXPECT_EQ(g_mutexRequests, 1);
    Shared::s_refuse = false;
    KZMBasAtiSetMutexFactory(NoMutex);  // not needed: the first attempt's is kept
    Shared& shared = Shared::Instance();
    shared.Lock();
    shared.Unlock();
    EXPECT_EQ(g_mutexRequests, 2);
    KZMBasAtiSetMutexFactory(CountedMutex);
    Shared::Instance();
    EXPECT_EQ(g_mutexRequests, 2);
    Shared::Finalize();  // ends the mutex too
    Shared::Instance();
    EXPECT_EQ(g_mutexRequests, 4);  // its own, and that of the other one it ended and needs again
}

TEST_F(GlobalSingleton, WithoutAMutexTheFatalRoutineIsTold) {
    static std::string report;
    KZMBasAtiSetMutexFactory(NoMutex);
    KZMBasSetFatalErrorHandler([](const char* message, const char* a, const char* b, const char* c,
                                  const char* source, int line) {
        report = std::string(message) + "|" + a + b + c + "|" + source + "|" + std::to_string(line);
        throw std::runtime_error("fatal");
    });
    EXPECT_THROW(Shared::Instance(), std::runtime_error);
    EXPECT_EQ(report, "AssertionFailed:m_lock != 0||KZMBasAtiGlobalSingleton|69");
}

TEST_F(GlobalSingleton, IsListedWhileItLivesAlsoAfterMemoryFailures) {
    struct Both {
        ~Both() {
            Shared::Finalize();
            Other::Finalize();
        }
    };
    RegistryRecord record;
    Other::Instance();
    Other::Finalize();
    Other::Finalize();  // unlike the form without a lock, looks for an object first
    EXPECT_EQ(record.Take(), "+(anonymous namespace)::Other -(anonymous namespace)::Other ");
    ForEveryAllocationFailure(
        [] { return Both(); }, [](auto&) { Shared::Instance(); },
        [](auto&, bool made) {
            const void* const listed =
                omi_SingletonRegistry::Instance()->Find(typeid(Shared).name());
            EXPECT_EQ(listed != nullptr, made);
        });
}

}  // namespace
