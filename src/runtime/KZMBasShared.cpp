#include <alloc/KZMBasAlloc.h>
#include <coreutils/KZMBasCoreUtils.h>
#include <cow/cow_NullValue.h>
#include <errors/KZMBasUtils.h>
#include <files/KZMBasFilStracePhase.h>
#include <generics/KZMBasGenericsLib.h>
#include <platform/platform.h>
#include <process/KZMBasCallstack.h>
#include <process/alert_loop.h>
#include <process/omi_AlertListener.h>
#include <process/omn_FPESetting.h>
#include <runtime/KZMBasShared.h>
#include <runtime/loader_entry.h>
#include <runtime/rgx_ReCompileCache.h>

#include <cstring>
#include <iterator>

namespace {

constinit unsigned g_starts = 0;
constinit int g_countOfCCallers = 0;

void Nothing() {}

// A module that nobody else starts; Start and Stop are its work.
template <void (*Start)() = Nothing, void (*Stop)() = Nothing>
struct OwnModule {
    static void Initialize(int& count) {
        Start();
        ++count;
    }
    static void Finalize(int& count) {
        --count;
        Stop();
    }
};

void StartFloatingPoint() {
    const char* const ignore = platform::Environment("KVL_IGNORE_FPE");
    if (ignore && std::strcmp(ignore, "1") == 0) {
        omn_ignoreFPESetting(true);
        platform::SetEnvironment("KVL_IGNORE_FPE", "0");  // child processes decide by themselves
    }
    omn_globalFPESetting();
    KZMBasCallstackInit();
}

void ReleaseNullValues() {
    if (!kzm_ProcessEnds()) cow_ReleaseNullValues();  // the threads that they belong to may go on
}

// A handler that ends the process leaves the listener to those who may be waiting in it for its
// end.
void StopAlerts() {
    if (!InAlertHandler()) omi_SingletonBase<omi_AlertListener>::Finalize();
}

struct Module {
    void (*initialize)(int& count);
    void (*finalize)(int& count);
};
template <void (*Start)() = Nothing, void (*Stop)() = Nothing>
constexpr Module kOwn = {OwnModule<Start, Stop>::Initialize, OwnModule<Start, Stop>::Finalize};

// In starting order; they stop in the reverse order.
constexpr Module kModules[] = {
    {KZMBasCoreUtils_initialize, KZMBasCoreUtils_finalize},
    {KZMBasGenericsLib_initialize, KZMBasGenericsLib_finalize},
    {KZMBasAlloc_initialize, KZMBasAlloc_finalize},
    kOwn<Nothing, ReleaseNullValues>,
    {KZMBasUtils_initialize, KZMBasUtils_finalize},
    kOwn<>,
    kOwn<Nothing, KZMBasAtiGlobalSingleton<rgx_ReCompileCache>::Finalize>,
    kOwn<>,
    kOwn<StartFloatingPoint, StopAlerts>,
    kOwn<Nothing, KZMBasAtiGlobalSingleton<KZMBasFilStracePhase::Impl>::Finalize>,
    kOwn<>,
    kOwn<>,  // the entry module: the last to start, the first to stop
};

void StopModules(std::size_t started, int& count) {
    while (started > 0) kModules[--started].finalize(count);
}

}  // namespace

void KZMBasShared_initialize(int& count) {
    if (g_starts++ != 0) return;
    ++count;
    std::size_t started = 0;
    try {
        for (; started < std::size(kModules); ++started) kModules[started].initialize(count);
    } catch (...) {
        StopModules(started, count);
        --count;
        --g_starts;
        throw;
    }
}

void KZMBasShared_finalize(int& count) {
    if (g_starts-- != 1) return;
    --count;
    StopModules(std::size(kModules), count);
}

extern "C" void KZMBasShared_initializeC() noexcept { KZMBasShared_initialize(g_countOfCCallers); }

extern "C" void KZMBasShared_finalizeC() noexcept { KZMBasShared_finalize(g_countOfCCallers); }
