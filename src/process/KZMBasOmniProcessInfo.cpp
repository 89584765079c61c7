#include <errors/KZMBasUtlVersion.h>
#include <platform/platform.h>
#include <process/KZMBasOmniProcessInfo.h>
#include <process/exe_name.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

constinit int g_processId = 0;
constinit int g_rank = 0;
constinit ExeNames g_exe{};

char* CopyTo(char* buffer, int size, const char* text) {
    if (!buffer || size < 1) return buffer;
    const std::size_t length = std::min(std::strlen(text), static_cast<std::size_t>(size) - 1);
    std::memcpy(buffer, text, length);
    buffer[length] = '\0';
    return buffer;
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

KZMBasOmniProcessInfo::KZMBasOmniProcessInfo() { ExeName(); }

void KZMBasOmniProcessInfo::Initialize() {
    g_processId = platform::ProcessId();
    DetermineRank();
    g_exe = {};
    DetermineExeName();
    KZMBasUtlVersion::InitReleaseInfo();
    KZMBasUtlVersion::InitBuildInfo();
}

void KZMBasOmniProcessInfo::Finalize() {
    g_processId = 0;
    g_rank = 0;
    g_exe = {};
}

void KZMBasOmniProcessInfo::DetermineRank() {
    const char* rank = platform::Environment("MPI_RANKID");
    if (!rank) rank = platform::Environment("PMI_RANK");
    if (rank) g_rank = std::atoi(rank);  // NOLINT(cert-err34-c): what is no number is rank 0
}

void KZMBasOmniProcessInfo::DetermineExeName() {
    const std::string path = platform::ModuleFileName();
    if (!path.empty()) SplitExePath(path, g_exe);
}

int KZMBasOmniProcessInfo::ProcessId() { return g_processId; }

int KZMBasOmniProcessInfo::Rank() { return g_rank; }

int KZMBasOmniProcessInfo::ThreadId() { return static_cast<int>(platform::ThreadId()); }

const char* KZMBasOmniProcessInfo::ExePath() {
    if (!g_exe.name[0]) DetermineExeName();
    return g_exe.path;
}

const char* KZMBasOmniProcessInfo::ExeName() {
    if (!g_exe.name[0]) DetermineExeName();
    return g_exe.name;
}

void KZMBasOmniProcessInfo::SaveEnvironment(const char* fileName) {
    if (!fileName) return;
    const std::vector<std::string> entries = platform::EnvironmentEntries();
    const char* const path = ExePath();
    const std::unique_ptr<std::FILE, CloseFile> file(
        std::fopen(platform::NativePath(fileName).c_str(), "a"));
    if (!file) return;
    std::fprintf(file.get(), "--- %s ---\n", path);
    for (const std::string& entry : entries) std::fprintf(file.get(), "%s\n", entry.c_str());
    std::fflush(file.get());
}

char* KZMBasOmniProcessInfo::ProcessName(int, char* buffer, int size) {
    return CopyTo(buffer, size, ExeName());
}

char* KZMBasOmniProcessInfo::ProcessNameFull(int, char* buffer, int size) {
    return CopyTo(buffer, size, ExePath());
}

char* KZMBasOmniProcessInfo::ProcessNameShort(int, char* buffer, int size) {
    return CopyTo(buffer, size, ExeName());
}
