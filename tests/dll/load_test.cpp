#include <dll/module.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>

#include <cstdlib>
#include <string>

// This program is not linked with KZMBasShared: it loads and unloads it. That a load has started
// the library shows in the environment, where the start turns a 1 into a 0.
namespace {

constexpr char kName[] = "KVL_IGNORE_FPE";

TEST(Loader, EachLoadStartsAndEachUnloadStopsWithoutLeaks) {
    for (int round = 0; round < KZM_LOADS; ++round) {
        SCOPED_TRACE(round);
        module::SetVariable(kName, "1");
        host_heap::Watch();
        void* const library = module::Load(KZM_SHARED_PATH);
        ASSERT_NE(library, nullptr);
        EXPECT_STREQ(std::getenv(kName), "0");
        EXPECT_GT(host_heap::g_probe.live, 0);  // the default exception factory
        module::Unload(library);
        EXPECT_EQ(host_heap::g_probe.live, 0);
        host_heap::Unwatch();
        ASSERT_FALSE(module::IsLoaded(KZM_SHARED_PATH));
    }
}

// An armed listener holds the library on Windows and ends with it on Linux; its client is gone.
TEST(Loader, UnloadingUnderAnArmedListenerIsSafe) {
    for (const char* const name : {"kzm_client_arm", "kzm_client_disarm"}) {
        void* const client = module::Load(KZM_CLIENT_PATH);
        ASSERT_NE(client, nullptr);
        reinterpret_cast<void (*)()>(module::Find(client, name))();
        module::Unload(client);
    }
    EXPECT_FALSE(module::IsLoaded(KZM_SHARED_PATH));
}

TEST(Loader, AProgramThatLinksTheLibraryFindsItStarted) {
    const char* const cases[][3] = {{"1", KZM_CHILD_PATH, "0 0 ignored\n"},
                                    {"yes", KZM_CHILD_PATH, "0 yes obeyed\n"},
                                    {"1", KZM_C_CLIENT_PATH, "0\n"}};
    for (const auto& [value, program, output] : cases) {
        module::SetVariable(kName, value);
        FILE* const pipe = module::Start(program);
        ASSERT_NE(pipe, nullptr);
        std::string text;
        for (int c; (c = std::fgetc(pipe)) != EOF;) text += static_cast<char>(c);
        EXPECT_TRUE(module::End(pipe) == 0 && text == output) << text;
    }
}

}  // namespace
