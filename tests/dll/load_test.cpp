#include <dll/module.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>

#include <cstdlib>
#include <string>

// This program is not linked with KZMBasShared: it loads and unloads it. That a load has started
// the library shows in the environment, where the start turns a 1 into a 0.
namespace {

constexpr char kName[] = "KVL_IGNORE_FPE";

std::string Variable() {
    const char* const value = std::getenv(kName);
    return value ? value : "unset";
}

TEST(Loader, EachLoadStartsAndEachUnloadStopsWithoutLeaks) {
    for (int round = 0; round < 50; ++round) {
        SCOPED_TRACE(round);
        module::SetVariable(kName, "1");
        host_heap::Watch();
        void* const library = module::Load(KZM_SHARED_PATH);
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(Variable(), "0");
        EXPECT_GT(host_heap::g_probe.live, 0);  // the default exception factory
        module::Unload(library);
        EXPECT_EQ(host_heap::g_probe.live, 0);
        host_heap::Unwatch();
        ASSERT_FALSE(module::IsLoaded(KZM_SHARED_PATH));
    }
}

TEST(Loader, UnloadingStopsOnlyWhatTheLoadStarted) {
    void* const library = module::Load(KZM_SHARED_PATH);
    ASSERT_NE(library, nullptr);
    void* const again = module::Load(KZM_SHARED_PATH);
    EXPECT_EQ(again, library);
    module::SetVariable(kName, "1");
    module::Unload(again);
    void* const start = module::Find(library, "KZMBasShared_initializeC");
    ASSERT_NE(start, nullptr);
    reinterpret_cast<void (*)()>(start)();
    EXPECT_EQ(Variable(), "1");  // it was running: nothing was started a second time
    reinterpret_cast<void (*)()>(module::Find(library, "KZMBasShared_finalizeC"))();
    module::Unload(library);
    EXPECT_FALSE(module::IsLoaded(KZM_SHARED_PATH));
}

TEST(Loader, AProgramThatLinksTheLibraryFindsItStarted) {
    const char* const cases[][2] = {
        {"1", "0 ignored"}, {"yes", "yes obeyed"}, {"01", "01 obeyed"}, {nullptr, "unset obeyed"}};
    for (const auto& [value, expected] : cases) {
        SCOPED_TRACE(expected);
        module::SetVariable(kName, value);
        EXPECT_EQ(module::Output(KZM_CHILD_PATH), expected);
    }
}

TEST(Loader, AProgramInCStartsAndStopsTheLibrary) {
    module::SetVariable(kName, "1");
    EXPECT_EQ(module::Output(KZM_C_CLIENT_PATH), "0 running");
}

}  // namespace
