#include <alloc/omi_SingletonRegistry.h>
#include <coreutils/KZMBasAtiThreadingModelHook.h>
#include <host/host_heap.h>
#include <platform/platform.h>
#include <runtime/KZMBasAtiGlobalSingleton.h>
#include <runtime/KZMBas_SingletonRegistry.h>
#include <support/expect_abort.h>
#include <support/registry_record.h>

#include <atomic>
#include <climits>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <vector>

// The mutexes of threads that lose a race, which are left by contract.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:CountedMutex"; }

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
        EXPECT_TRUE(made == &omi_Singleton<Settings>::Instance() && made == Listed<Settings>());
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
    std::atomic<int> waiting = 8;
    for (std::thread& each : threads)
        each = std::thread([&waiting] {
            for (--waiting; waiting > 0;) std::this_thread::yield();
            for (int round = 0; round < 1000; ++round) {
                Shared::Instance().Lock();
                ++Shared::Instance().value;
                Shared::Instance().Unlock();
            }
        });
    for (std::thread& each : threads) each.join();
    EXPECT_EQ(Shared::Instance().value, 8000);
}

// One attempt more asks for a mutex although the class has one; what it gets is not needed. A fresh
// object asks for its own and for that of the other one, which the first has ended.
TEST_F(GlobalSingleton, EachAttemptAsksForAMutexAndWithoutOneTheFatalRoutineIsTold) {
    KZMBasSetFatalErrorHandler([](const char* message, const char* a, const char* b, const char* c,
                                  const char* source, int line) {
        throw std::runtime_error(std::string(message) + "|" + a + b + c + "|" + source + "|" +
                                 std::to_string(line));
    });
    Other::Instance();
    const std::tuple<bool, bool, std::string, int> attempts[] = {
        {false, false, "AssertionFailed:m_lock != 0||KZMBasAtiGlobalSingleton|69", 1},
        {true, true, "refused", 1},
        {false, false, "made", 1},
        {false, false, "made", 0},
        {true, false, "made anew", 2}};
    for (const auto& [mutexes, refuse, expected, requests] : attempts) {
        if (expected == "made anew") Shared::Finalize();
        g_mutexRequests = 0;
        g_mutexes = mutexes;
        Shared::s_refuse = refuse;
        try {
            Shared::Instance().Lock();
            Shared::Instance().Unlock();
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(), expected);
        }
        EXPECT_EQ(Listed<Shared>() != nullptr, expected.starts_with("made"));
        EXPECT_EQ(g_mutexRequests, requests);
    }
}

std::string g_called;

template <int kId>
void Finalizer() {
    g_called += std::to_string(kId) + " ";
}

KZMBas_SingletonRegistry& Registry() { return omi_Singleton<KZMBas_SingletonRegistry>::Instance(); }

template <int... kIds>
void Tag() {
    (Registry().Tag(kIds, Finalizer<kIds>), ...);
}

std::string Called() { return std::exchange(g_called, std::string()); }

class SingletonRegistry : public testing::Test {
protected:
    ~SingletonRegistry() override { Leftovers(); }

    static std::string Leftovers() {
        omi_SingletonBase<KZMBas_SingletonRegistry>::Finalize();
        return Called();
    }
};

TEST_F(SingletonRegistry, PhasesFinalizeTheirIdsInOrder) {
    // The second phase alone / the first / then the second / left after both.
    const std::pair<SingletonDestructCondition, const char*> cases[] = {
        {{true, false, false},
         "6 7 11 23 8 25 13 15 28 29 27 / "
         "20 10 2 3 4 9 11 14 24 18 21 28 29 / 6 7 23 8 25 13 15 27 / 1 5 12 16 17 19 22 26 "},
        {{false, true, false},
         "6 7 11 23 8 25 26 12 16 22 17 13 15 18 19 28 29 27 / "
         "1 10 20 5 2 3 4 9 11 18 21 28 29 / 6 7 23 8 25 26 12 16 22 17 13 15 19 27 / 14 24 "},
        {{false, false, true},
         "6 7 11 23 8 25 13 15 18 28 29 27 / "
         "5 2 3 4 9 11 18 21 28 29 / 6 7 23 8 25 13 15 27 / 1 10 12 14 16 17 19 20 22 24 26 "}};
    for (const auto& [condition, called] : cases) {
        std::string text;
        for (const auto& phases : {std::vector{1}, {-1, 2, INT_MAX, 0, 1, 0, 1}}) {
            Leftovers();
            Registry().Condition() = condition;
            []<int... kIds>(std::integer_sequence<int, kIds...>) { Tag<kIds...>(); }
            (std::make_integer_sequence<int, 30>());
            for (const int phase : phases) {
                Registry().Destroy(static_cast<SingletonDestructPhase>(phase));
                if (!g_called.empty()) text += Called() + "/ ";
            }
        }
        EXPECT_EQ(text + Leftovers(), called);
    }
}

void Restless() {
    Finalizer<5>();
    Registry().Destroy(SingletonDestructPhaseFirst);
    Registry().Destroy(5);
    Registry().Destroy(7);
    Registry().Destroy();
    Registry().Tag(5, Restless);
    Tag<8>();
}

TEST_F(SingletonRegistry, FinalizersMayTagAndDestroyAndRunOnce) {
    const std::pair<void (*)(), const char*> cases[] = {
        {[] { EXPECT_EQ(Registry().Destroy(5), 1); }, "5 7 8 "},
        {[] { Registry().Destroy(SingletonDestructPhaseFirst); }, "5 7 8 "},
        {[] { omi_SingletonBase<KZMBas_SingletonRegistry>::Finalize(); }, "5 7 "}};
    for (const auto& [end, called] : cases) {
        Registry().Tag(5, Restless);
        Registry().Tag(9, [] { EXPECT_EQ(Registry().Destroy(9), 1); });
        Tag<7>();
        end();
        EXPECT_EQ(Registry().Destroy(5), 0);
        Registry().Destroy(8);
        EXPECT_EQ(Called(), called);
    }
}

TEST_F(SingletonRegistry, LeftoversEndInAscendingOrderAndAreReportedOnRequest) {
    const auto run = [](const char* variable, long failAt) {
        platform::SetEnvironment("KZM_PRINT_FINALIZED_LEFTOVER_SINGLETON", variable);
        Tag<2000000, 7, 0, -3, INT_MIN>();
        testing::internal::CaptureStdout();
        for (const int id : {3, INT_MAX}) EXPECT_EQ(Registry().Destroy(id), 0) << id;
        host_heap::Watch(failAt);
        EXPECT_EQ(Leftovers(), "7 2000000 ");
        host_heap::Unwatch();
        return testing::internal::GetCapturedStdout();
    };
    for (const long failAt : {0, 1, 2})
        EXPECT_EQ(run("no", failAt),
                  "Singleton with ID -2147483648 is registered but not finalized\n"
                  "Singleton with ID -3 is registered but not finalized\n"
                  "Singleton with ID 0 is registered but not finalized\n"
                  "Singleton with ID 7 is now finalized in the end\n"
                  "Singleton with ID 2000000 is now finalized in the end\n");
    EXPECT_EQ(run(nullptr, 0), "");
}

}  // namespace
