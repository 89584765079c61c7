#include <gtest/gtest.h>
#include <platform/platform.h>
#include <process/KZMBasOmniProcessInfo.h>
#include <process/exe_name.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Info = KZMBasOmniProcessInfo;

TEST(ProcessInfo, TheRankComesFromTheLauncherAndStaysWhereItSaysNothing) {
    const struct {
        const char* mpi;
        const char* pmi;
        int rank;
    } cases[] = {{nullptr, nullptr, 0}, {"3", "5", 3},         {nullptr, "6", 6},
                 {nullptr, nullptr, 6}, {"abc", "5", 0},       {nullptr, " 12 of 16", 12},
                 {"-2", nullptr, -2},   {nullptr, nullptr, -2}};
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
    Info::Finalize();
    EXPECT_EQ(Info::ProcessId(), 0);
    EXPECT_STREQ(Info::ExeName(), "process_test");
    Info::Initialize();
    EXPECT_EQ(Info::ProcessId(), platform::ProcessId());
    int other = 0;
    std::thread([&other] { other = Info::ThreadId(); }).join();
    EXPECT_NE(other, Info::ThreadId());
    EXPECT_EQ(static_cast<std::uint32_t>(Info::ThreadId()), platform::ThreadId());

    const std::string path = Info::ExePath();
    EXPECT_EQ(path.substr(1, 2), ":\\");
    EXPECT_EQ(path.substr(path.rfind('\\')).substr(0, 13), "\\process_test");
    EXPECT_TRUE(std::ifstream(platform::NativePath(path.c_str())).good());
    char buffer[8] = "#######";
    EXPECT_STREQ(Info::ProcessName(0, buffer, 8), "process");
    EXPECT_STREQ(Info::ProcessNameShort(0, buffer, 5), "proc");
    EXPECT_EQ(Info::ProcessNameFull(0, buffer, 0), buffer);
    EXPECT_STREQ(buffer, "proc");
    EXPECT_EQ(Info::ProcessNameFull(0, nullptr, 8), nullptr);
    EXPECT_EQ(Info::ProcessNameFull(0, buffer, 8), path.substr(0, 7));
}

TEST(ProcessInfo, AnExecutablesNameEndsBeforeItsFirstExtension) {
    const std::string longName(300, 'n');
    const std::string longPath = "C:\\" + std::string(1100, 'd');
    const std::pair<std::string, std::string> cases[] = {
        {"C:\\run\\model.exe", "model"},
        {"C:\\x.exe\\solver", "solver"},
        {"C:\\a.exe.b", "a"},
        {"C:\\my.executor.exe", "my"},
        {"C:\\S.EXE", "S.EXE"},
        {"C:\\.exe", ""},
        {"C:\\", ""},
        {"model.exe", "inconnu"},
        {"C:/run/model.exe", "inconnu"},
        {"C:\\" + longName, longName.substr(0, 255)},
        {longPath, longPath.substr(3, 255)}};
    for (const auto& [path, name] : cases) {
        SCOPED_TRACE(path);
        ExeNames names;
        std::memset(&names, '#', sizeof names);
        SplitExePath(path, names);
        EXPECT_EQ(names.path, path.substr(0, 1023));
        EXPECT_EQ(names.name, name);
    }
}

TEST(ProcessInfo, EachSavedEnvironmentIsAppendedUnderTheExecutablesPath) {
    const std::string name = testing::TempDir() + "environment.txt";
    const std::string host = platform::WorkingDirectory() + "\\no such directory\\environment.txt";
    platform::SetEnvironment("PMI_RANK", "%s\\ 1");
    Info::SaveEnvironment(nullptr);
    Info::SaveEnvironment(host.c_str());
    EXPECT_FALSE(std::ifstream(platform::NativePath(host.c_str())).good());
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

}  // namespace
