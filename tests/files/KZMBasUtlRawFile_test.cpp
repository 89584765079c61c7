#include <errors/KZMBasUtlSystemError.h>
#include <files/KZMBasUtlRawFile.h>
#include <files/working_directory.h>

#include <string>
#include <tuple>
#include <vector>

namespace {

using platform::FileMode;

class RawFile : public InOwnDirectory {};

// The service of a KZMBasUtlSystemError, the code of another exception, or "".
template <class Call>
std::string Thrown(Call call) {
    try {
        call();
    } catch (const KZMBasException& e) {
        EXPECT_STREQ(e.ThrownFile(), "KZMBasUtlRawFile.cpp");
        const auto* const service = dynamic_cast<const KZMBasUtlSystemError*>(&e);
        return service ? service->GetServiceName() : std::to_string(e.GetCode());
    }
    return "";
}

TEST_F(RawFile, WhatCannotBeOpenedNamesTheServiceAndTheReason) {
    std::filesystem::create_directory("d");
    const std::pair<const char*, const char*> cases[] = {
        {"", "d"}, {"d", ""},        {"", "http://host/f"}, {"", "Network connectors"},
        {"", ""},  {"missing", "f"}, {"q:/", "f"}};
    for (const auto& [directory, file] : cases) {
        for (const FileMode mode : {FileMode::kRead, FileMode::kUpdate, FileMode::kReplace}) {
            const KZMBasUtlFilePath path(directory, file);
            EXPECT_EQ(Thrown([&] { KZMBasUtlRawFile(path, mode); }), "CreateFile") << file;
        }
    }
    try {
        KZMBasUtlRawFile({"", "missing"}, FileMode::kRead);
    } catch (const KZMBasUtlSystemError& error) {
        EXPECT_EQ(error.GetSystemErrorCode().Number(), 2);  // no such file, on both systems
    }
}

TEST_F(RawFile, KeepsOrReplacesWhatIsThereAndThrowsAClassForEachFailure) {
    const KZMBasUtlFilePath path("", "fé");
    char read[8] = "";
    KZMBasUtlRawFile(path, FileMode::kUpdate).Write("abcdef", 6);
    EXPECT_TRUE(std::ifstream("fé").good());  // the C library's name for it
    {
        KZMBasUtlRawFile file(path, FileMode::kUpdate);
        file.Seek(2);
        file.Write("XY", 2);
        file.Write(nullptr, 0);
        file.Seek(0);
        file.Read(read, 6);
        EXPECT_STREQ(read, "abXYef");
        file.Seek(std::int64_t{5} << 30);  // beyond 32 bits
        EXPECT_EQ(Thrown([&] { file.Read(read, 1); }), "304");
    }
    KZMBasUtlRawFile file(path, FileMode::kRead);
    EXPECT_EQ(Thrown([&] { file.Write("x", 1); }), "307");
    EXPECT_EQ(Thrown([&] { file.Seek(-1); }), "SetFilePointer");
    file.Close();
    EXPECT_EQ(Thrown([&] { file.Read(read, 1); }), "303");
    EXPECT_EQ(Thrown([&] { file.Write("x", 1); }), "307");
    EXPECT_EQ(Thrown([&] { file.Seek(0); }), "SetFilePointer");
    EXPECT_EQ(Thrown([&] { file.Close(); }), "CloseHandle");
    KZMBasUtlRawFile replaced(path, FileMode::kReplace);
    EXPECT_EQ(Thrown([&] { replaced.Read(read, 1); }), "304");
}

// Transfers at most the given numbers of bytes call by call, -1 being a failure.
class InPieces : public platform::File {
public:
    explicit InPieces(std::vector<int> pieces) : m_pieces(std::move(pieces)) {}
    std::int64_t Seek(std::int64_t) override { return -1; }  // looks like a failure, gives no error
    std::ptrdiff_t Read(void* buffer, std::size_t size) override {
        const int n = Next(size);
        for (int i = 0; i < n; ++i) static_cast<char*>(buffer)[i] = m_next++;
        return n;
    }
    std::ptrdiff_t Write(const void* buffer, std::size_t size) override {
        const int n = Next(size);
        for (int i = 0; i < n; ++i) EXPECT_EQ(static_cast<const char*>(buffer)[i], m_next++);
        return n;
    }
    bool Close() override { return true; }

private:
    int Next(std::size_t size) {
        EXPECT_EQ(size, 6u - static_cast<unsigned>(m_next - 'a'));  // what is missing
        const int n = m_pieces.at(m_call++);
        if (n < 0) platform::SetLastError(5);
        return n;
    }

    std::vector<int> m_pieces;
    std::size_t m_call = 0;
    char m_next = 'a';
};

TEST(RawFileTransfer, GoesOnUntilNothingIsMissing) {
    const std::tuple<std::vector<int>, const char*, const char*, const char*> cases[] = {
        {{3, 1, 2}, "", "", "abcdef"},
        {{3, 0}, "304", "308", "abc"},
        {{0}, "304", "308", ""},
        {{3, -1}, "303", "307", "abc"}};
    for (const auto& [pieces, readError, writeError, transferred] : cases) {
        char buffer[7] = "";
        KZMBasUtlRawFile source(std::make_unique<InPieces>(pieces));
        EXPECT_EQ(Thrown([&] { source.Read(buffer, 6); }), readError);
        EXPECT_STREQ(buffer, transferred);
        KZMBasUtlRawFile target(std::make_unique<InPieces>(pieces));
        EXPECT_EQ(Thrown([&] { target.Write("abcdef", 6); }), writeError);
        EXPECT_EQ(Thrown([&] { target.Seek(0xFFFFFFFF); }), "");
    }
}

}  // namespace
