#include <files/KZMBasUtlDirPathUtils.h>
#include <files/KZMBasUtlRawFile.h>
#include <files/working_directory.h>
#include <sys/stat.h>

#include <csignal>
#include <optional>
#include <thread>

namespace {

using platform::FileMode;

class PosixFile : public InOwnDirectory {};

// The reader waits in the system while signals arrive, and gets the text in two halves.
TEST_F(PosixFile, InterruptedCallsAreMadeAgainAndShortOnesCompleted) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    struct sigaction action {
    }, before;
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, &before);
    std::optional<KZMBasUtlRawFile> pipe;  // open until all has been read
    std::thread writer([&pipe, reader = pthread_self()] {
        for (const char* half : {"", "abc", "def"}) {
            if (*half) pipe->Write(half, 3);
            for (int i = 0; i < 10; ++i) {
                pthread_kill(reader, SIGUSR1);
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
            if (!pipe) pipe.emplace(KZMBasUtlFilePath("", "pipe"), FileMode::kUpdate);
        }
    });
    char read[7] = "";
    EXPECT_NO_THROW(KZMBasUtlRawFile({"", "pipe"}, FileMode::kRead).Read(read, 6));
    writer.join();
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_STREQ(read, "abcdef");
}

TEST_F(PosixFile, OnlyDriveZExists) {
    const std::pair<const char*, const char*> cases[] = {
        {"Z:\\tmp\\a", "/tmp/a"}, {"z:/tmp", "/tmp"}, {"Z:", "."},     {"Z:a", "a"},
        {"a\\b", "a/b"},          {"\\a", "/a"},      {"C:\\tmp", ""}, {"c:", ""},
        {"\\\\host\\share", ""},  {"//host/s", ""},   {"1:x", "1:x"},  {"", ""}};
    for (const auto& [path, native] : cases)
        EXPECT_EQ(KZMBasUtlDirPathUtils::NativeName(path), native) << path;
}

TEST_F(PosixFile, ARemovedWorkingDirectoryLeavesPathsThatDoNotExist) {
    std::filesystem::create_directory("gone");
    std::filesystem::current_path("gone");
    std::filesystem::remove("../gone");
    EXPECT_TRUE(getdevice() == "Z:" && !KZMBasUtlFilePath("", "").Exists());
    EXPECT_FALSE(KZMBasUtlDirPathUtils::CheckDirectory(KZMBasUtlgetcwd()));
}

}  // namespace
