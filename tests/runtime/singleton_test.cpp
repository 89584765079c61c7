#include <alloc/omi_SingletonRegistry.h>
#include <coreutils/KZMBasAtiThreadingModelHook.h>
#include <runtime/KZMBasAtiGlobalSingleton.h>
#include <runtime/omi_Singleton.h>
#include <support/expect_abort.h>
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

template <class T>
void* Listed() {
    return omi_SingletonRegistry::Instance()->Find(typeid(T).name());
}

struct Settings : omi_SingletonBase<Settings> {
    static inline std::string s_seenWhileDying;
    static inline bool s_refuse = true;
    Settings() {
        if (s_refuse) throw std::runtime_error("refused");
    }
    virtual ~Settings() {  // virtual: the base is constructed before there is a dynamic type
        s_seenWhileDying = &omi_Singleton<Settings>::Instance() == this ? "itself" : "another";
    }
    Block block = NewBlock();
};

TEST(Singleton, IsMadeOnceListedWhileItLivesAndMadeAnew) {
    EXPECT_THROW(omi_Singleton<Settings>::Instance(), std::runtime_error);
    EXPECT_EQ(Listed<Settings>(), nullptr);
    Settings::s_refuse = false;
    RegistryRecord record;
    Settings* const first = &omi_Singleton<Settings>::Instance();
    EXPECT_EQ(first, &omi_Singleton<Settings>::Instance());
    EXPECT_EQ(Listed<Settings>(), first);
    omi_SingletonBase<Settings>::Finalize();
    EXPECT_EQ(Settings::s_seenWhileDying, "itself");
    omi_SingletonBase<Settings>::Finalize();  // there is none: only the name is taken out again
    omi_Singleton<Settings>::Instance();
    omi_SingletonBase<Settings>::Finalize();
    const std::string name = "(anonymous namespace)::Settings ";
    EXPECT_EQ(record.Take(), "+" + name + "-" + name + "-" + name + "+" + name + "-" + name);
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
bool g_mutexes = true;
KZMBasAtiMutex* CountedMutex() {
    ++g_mutexRequests;
    return g_mutexes ? KZMBasAtiDefaultMutex() : nullptr;
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
    GlobalSingleton() { KZMBasAtiSetMutexFactory(CountedMutex); }
    ~GlobalSingleton() override {
        Shared::Finalize();
        Other::Finalize();
        KZMBasAtiSetMutexFactory(nullptr);
        KZMBasSetFatalErrorHandler(nullptr);
        g_mutexes = true;
    }
};

TEST_F(GlobalSingleton, ThreadsThatRaceForItGetOneObjectAndItsLock) {
    Shared::s_made = 0;
    std::vector<std::thread> threads;
    std::atomic<bool> go{false};
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&go] {
            while (!go) std::this_thread::yield();
            for (int round = 0; round < 1000; ++round) {
                Shared::Instance().Lock();
                ++Shared::Instance().value;
                Shared::Instance().Unlock();
            }
        });
    go = true;
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(Shared::s_made, 1);
    EXPECT_EQ(Shared::Instance().value, 8000);
}

// One attempt more asks for a mutex although the class has one; what it gets is not needed.
TEST_F(GlobalSingleton, EachAttemptAsksForAMutexAndWithoutOneTheFatalRoutineIsTold) {
    static std::string report;
    KZMBasSetFatalErrorHandler([](const char* message, const char* a, const char* b, const char* c,
                                  const char* source, int line) {
        report = std::string(message) + "|" + a + b + c + "|" + source + "|" + std::to_string(line);
        throw std::runtime_error("fatal");
    });
    Other::Instance();
    g_mutexes = false;
    EXPECT_THROW(Shared::Instance(), std::runtime_error);
    EXPECT_EQ(report, "AssertionFailed:m_lock != 0||KZMBasAtiGlobalSingleton|69");
    g_mutexRequests = 0;
    g_mutexes = Shared::s_refuse = true;
    EXPECT_THROW(Shared::Instance(), std::runtime_error);
    EXPECT_EQ(Listed<Shared>(), nullptr);
    g_mutexes = Shared::s_refuse = false;
    for (int times = 0; times < 2; ++times) {
        Shared::Instance().Lock();
        Shared::Instance().Unlock();
    }
    EXPECT_EQ(g_mutexRequests, 2);
    g_mutexes = true;
    Shared::Finalize();  // ends the mutex too
    Shared::Instance();
    EXPECT_EQ(g_mutexRequests, 4);  // its own, and that of the other one it ended and needs again
}

}  // namespace
