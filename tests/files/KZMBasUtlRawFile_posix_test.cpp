#include <errors/KZMBasUtlWriteError.h>
#include <files/KZMBasUtlDirPathUtils.h>
#include <files/KZMBasUtlRawFile.h>
#include <files/working_directory.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <cerrno>
#include <csignal>
#include <thread>

namespace {

using platform::FileMode;

class PosixFile : public InOwnDirectory {};

TEST_F(PosixFile, AFullDeviceIsAWriteError) {
    KZMBasUtlRawFile full({"/dev", "full"}, FileMode::kUpdate);
    try {
        full.Write("x", 1);
        ADD_FAILURE() << "written";
    } catch (const KZMBasUtlWriteError& error) {
        EXPECT_EQ(error.GetSystemErrorCode().Number(), ENOSPC);
    }
}

// The reader waits in the system call while signals arrive, then for each half of the text.
TEST_F(PosixFile, InterruptedCallsAreMadeAgainAndShortOnesCompleted) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    static volatile std::sig_atomic_t s_signals = 0;
    s_signals = 0;
    struct sigaction action {};
    action.sa_handler = [](int) { s_signals = s_signals + 1; };
    struct sigaction before;
    sigaction(SIGUSR1, &action, &before);

    const pthread_t reader = pthread_self();
    std::thread writer([reader] {
        const auto interrupt = [reader] {
            for (int i = 0; i < 10; ++i) {
                pthread_kill(reader, SIGUSR1);
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        };
        interrupt();  // while it opens
        KZMBasUtlRawFile pipe({"", "pipe"}, FileMode::kUpdate);
        interrupt();
        pipe.Write("abc", 3);
        interrupt();
        pipe.Write("def", 3);
    });
    char read[7] = "";
    KZMBasUtlRawFile pipe({"", "pipe"}, FileMode::kRead);
    EXPECT_NO_THROW(pipe.Read(read, 6));
    writer.join();
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_STREQ(read, "abcdef");
    EXPECT_GT(s_signals, 0);
}

TEST_F(PosixFile, OnlyDriveZExists) {
    const std::pair<const char*, const char*> cases[] = {
        {"Z:\\tmp\\a", "/tmp/a"}, {"z:/tmp", "/tmp"}, {"Z:", "."},          {"Z:a", "a"},
        {"a\\b", "a/b"},          {"\\a", "/a"},      {"C:\\tmp", ""},      {"c:", ""},
        {"\\\\host\\share", ""},  {"//host/s", ""},   {"name:x", "name:x"}, {"", ""}};
    for (const auto& [path, native] : cases)
        EXPECT_EQ(KZMBasUtlDirPathUtils::NativeName(path), native) << path;
}

TEST_F(PosixFile, ARemovedWorkingDirectoryLeavesPathsThatDoNotExist) {
    std::filesystem::create_directory("gone");
    std::filesystem::current_path("gone");
    std::filesystem::remove("../gone");
    EXPECT_EQ(getdevice(), "Z:");
    EXPECT_FALSE(KZMBasUtlFilePath("", "").Exists());
    EXPECT_FALSE(KZMBasUtlDirPathUtils::CheckDirectory(KZMBasUtlgetcwd()));
}

}  // namespace
