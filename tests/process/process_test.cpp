#include <gtest/gtest.h>
#include <platform/platform.h>
#include <process/KZMBasOmniProcessInfo.h>
#include <process/exe_name.h>
#include <process/omn_FPESetting.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <tuple>

namespace {

using Info = KZMBasOmniProcessInfo;

TEST(ProcessInfo, TheRankComesFromTheLauncherAndStaysWhereItSaysNothing) {
    const char* const none = nullptr;
    const std::tuple<const char*, const char*, int> cases[] = {
        {none, none, 0}, {"3", "5", 3}, {none, "6", 6}, {none, none, 6}, {"abc", "5", 0}};
    for (const auto& [mpi, pmi, rank] : cases) {
        platform::SetEnvironment("MPI_RANKID", mpi);
        platform::SetEnvironment("PMI_RANK", pmi);
        Info::Initialize();
        EXPECT_EQ(Info::Rank(), rank);
    }
    Info::Finalize();
    EXPECT_EQ(Info::Rank(), 0);
}

TEST(ProcessInfo, TellsTheProcessTheCallingThreadAndTheExecutable) {
    EXPECT_EQ(Info::ProcessId(), 0);
    EXPECT_STREQ(Info::ExeName(), "process_test");
    Info::Initialize();
    EXPECT_EQ(Info::ProcessId(), platform::ProcessId());
    EXPECT_EQ(static_cast<std::uint32_t>(Info::ThreadId()), platform::ThreadId());
    const std::string path = Info::ExePath();
    EXPECT_EQ(path.substr(1, 2), ":\\");
    EXPECT_TRUE(std::ifstream(platform::NativePath(path.c_str())).good());
    char buffer[8] = "#######";
    EXPECT_STREQ(Info::ProcessName(0, buffer, 8), "process");
    EXPECT_STREQ(Info::ProcessNameShort(0, buffer, 5), "proc");
    EXPECT_STREQ(Info::ProcessNameFull(0, buffer, 0), "proc");
    EXPECT_EQ(Info::ProcessNameFull(0, buffer, 8), path.substr(0, 7));
    Info::Finalize();
}

// As often as it fits into that many bytes.
std::string Repeated(const std::string& text, std::size_t size) {
    std::string repeated;
    while (repeated.size() + text.size() <= size) repeated += text;
    return repeated;
}

TEST(ProcessInfo, AnExecutablesNameEndsBeforeItsFirstExtensionAndIsCutBetweenCharacters) {
    const std::string letter = platform::Multibyte("é", 4);
    ASSERT_FALSE(letter.empty());
    const std::pair<std::string, std::string> cases[] = {
        {"C:\\x.exe\\solver", "solver"}, {"C:\\my.executor.exe", "my"},
        {"C:\\S.EXE", "S.EXE"},          {"C:\\.exe", ""},
        {"C:/run/model.exe", "inconnu"}, {"C:\\" + Repeated("é", 2400), Repeated(letter, 255)}};
    for (const auto& [path, name] : cases) {
        SCOPED_TRACE(path);
        ExeNames names;
        std::memset(&names, '#', sizeof names);
        SplitExePath(path, names);
        EXPECT_EQ(names.path, path.size() < 1024 ? path : "C:\\" + Repeated(letter, 1020));
        EXPECT_EQ(names.name, name);
    }
}

TEST(ProcessInfo, EachSavedEnvironmentIsAppendedUnderTheExecutablesPath) {
    const std::string name = testing::TempDir() + "env" + std::to_string(platform::ProcessId());
    platform::SetEnvironment("PMI_RANK", "%s\\ 1");
    Info::SaveEnvironment(nullptr);
    Info::SaveEnvironment("Z:\\no such directory\\file");
    std::string block = std::string("--- ") + Info::ExePath() + " ---\n";
    for (const std::string& entry : platform::EnvironmentEntries()) block += entry + "\n";
    EXPECT_NE(block.find("\nPMI_RANK=%s\\ 1\n"), std::string::npos);
    for (const std::string& expected : {block, block + block}) {
        Info::SaveEnvironment(name.c_str());
        std::ifstream file(name);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), expected);
    }
    std::remove(name.c_str());
}

volatile double g_zero = 0;
volatile double g_huge = 1e308;
double (*const kOperations[])() = {[] { return 1.0 / g_zero; }, [] { return g_zero / g_zero; },
                                   [] { return g_huge * 10; }};

TEST(FloatingPointDeathTest, TrapsStopTheProcessWhereWantedAndNotIgnored) {
    const std::tuple<const char*, bool, bool> cases[] = {
        {nullptr, false, false}, {"0", false, false}, {"1", false, true},
        {"00", false, true},     {"no", false, true}, {"1", true, false}};
    for (const auto& [wish, ignore, trapping] : cases) {
        platform::SetEnvironment("GLOBAL_ENABLE_FPE", wish);
        omn_ignoreFPESetting(ignore);
        omn_globalFPESetting();
        EXPECT_EQ(omn_currentFPEState().trapping, trapping) << (wish ? wish : "unset");
        if (trapping) continue;
        for (const auto operation : kOperations) EXPECT_FALSE(std::isfinite(operation()));
    }
    platform::SetEnvironment("GLOBAL_ENABLE_FPE", "1");
    omn_ignoreFPESetting(false);
    for (const auto operation : kOperations)
        EXPECT_DEATH((omn_globalFPESetting(), std::printf("%g", operation())), "");
    platform::SetEnvironment("GLOBAL_ENABLE_FPE", nullptr);
    omn_globalFPESetting();
}

}  // namespace
