#include <alloc/omi_SingletonRegistry.h>
#include <coreutils/KZMBasAtiThreadingModelHook.h>
#include <runtime/KZMBasAtiGlobalSingleton.h>
#include <runtime/omi_Singleton.h>
#include <support/expect_abort.h>
#include <support/registry_record.h>

#include <latch>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

template <class T>
void* Listed() {
    return omi_SingletonRegistry::Instance()->Find(typeid(T).name());
}

struct Settings : omi_SingletonBase<Settings> {
    static inline const Settings* s_seenWhileDying;
    static inline bool s_refuse = true;
    Settings() {
        if (s_refuse) throw std::runtime_error("refused");
    }
    virtual ~Settings() {  // virtual: the base is constructed before there is a dynamic type
        s_seenWhileDying = &omi_Singleton<Settings>::Instance();
    }
};

TEST(Singleton, IsMadeOnceListedWhileItLivesAndMadeAnew) {
    EXPECT_THROW(omi_Singleton<Settings>::Instance(), std::runtime_error);
    EXPECT_EQ(Listed<Settings>(), nullptr);
    Settings::s_refuse = false;
    RegistryRecord record;
    for (int times = 0; times < 2; ++times) {
        Settings* const made = &omi_Singleton<Settings>::Instance();
        EXPECT_EQ(made, &omi_Singleton<Settings>::Instance());
        EXPECT_EQ(Listed<Settings>(), made);
        omi_SingletonBase<Settings>::Finalize();
        EXPECT_EQ(Settings::s_seenWhileDying, made);
        omi_SingletonBase<Settings>::Finalize();  // there is none: only the name is taken out again
    }
    const std::string name = "(anonymous namespace)::Settings ",
                      once = "+" + name + "-" + name + "-" + name;
    EXPECT_EQ(record.Take(), once + once);
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
    Shared() {
        Other::Instance();  // the lock that is held is recursive
        if (s_refuse) throw std::runtime_error("refused");
    }
    virtual ~Shared() { Other::Finalize(); }
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
    std::thread threads[8];
    std::latch start(8);
    for (std::thread& each : threads)
        each = std::thread([&start] {
            start.arrive_and_wait();
            for (int round = 0; round < 1000; ++round) {
                Shared::Instance().Lock();
                ++Shared::Instance().value;
                Shared::Instance().Unlock();
            }
        });
    for (std::thread& each : threads) each.join();
    EXPECT_EQ(Shared::Instance().value, 8000);
}

// One attempt more asks for a mutex although the class has one; what it gets is not needed.
TEST_F(GlobalSingleton, EachAttemptAsksForAMutexAndWithoutOneTheFatalRoutineIsTold) {
    KZMBasSetFatalErrorHandler([](const char* message, const char* a, const char* b, const char* c,
                                  const char* source, int line) {
        throw std::runtime_error(std::string(message) + "|" + a + b + c + "|" + source + "|" +
                                 std::to_string(line));
    });
    const auto attempt = [](bool mutexes, bool refuse) -> std::string {
        g_mutexes = mutexes;
        Shared::s_refuse = refuse;
        try {
            Shared::Instance().Lock();
            Shared::Instance().Unlock();
            return "made";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(Listed<Shared>(), nullptr);
            return error.what();
        }
    };
    Other::Instance();
    EXPECT_EQ(attempt(false, false), "AssertionFailed:m_lock != 0||KZMBasAtiGlobalSingleton|69");
    g_mutexRequests = 0;
    EXPECT_EQ(attempt(true, true), "refused");
    for (int times = 0; times < 2; ++times) EXPECT_EQ(attempt(false, false), "made");
    EXPECT_EQ(g_mutexRequests, 2);
    Shared::Finalize();  // ends the mutex too
    EXPECT_EQ(attempt(true, false), "made");
    EXPECT_EQ(g_mutexRequests, 4);  // its own, and that of the other one it ended and needs again
}

}  // namespace
