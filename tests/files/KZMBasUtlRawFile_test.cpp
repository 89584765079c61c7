#include <errors/KZMBasUtlSystemError.h>
#include <files/KZMBasUtlRawFile.h>
#include <files/working_directory.h>

#include <string>
#include <utility>

namespace {

using platform::FileMode;

class RawFile : public InOwnDirectory {};

// The service of a KZMBasUtlSystemError, the code of another exception, or "".
template <class Call>
std::string Thrown(Call call) {
    try {
        call();
    } catch (const KZMBasException& e) {
        const auto* const service = dynamic_cast<const KZMBasUtlSystemError*>(&e);
        return service ? service->GetServiceName() : std::to_string(e.GetCode());
    }
    return "";
}

TEST_F(RawFile, WhatCannotBeOpenedNamesTheServiceAndTheReason) {
    std::filesystem::create_directory("d");
    const std::pair<const char*, cow_String> cases[] = {
        {"", "d"}, {"d", ""},        {"", "http://host/f"}, {"", "Network connectors"},
        {"", ""},  {"missing", "f"}, {"q:/", "f"},          {"", cow_String("f\0x", 3)}};
    for (const auto& [directory, file] : cases)
        for (const FileMode mode : {FileMode::kRead, FileMode::kUpdate, FileMode::kReplace})
            EXPECT_EQ(Thrown([&] { KZMBasUtlRawFile({directory, file}, mode); }), "CreateFile");
}

TEST_F(RawFile, KeepsOrReplacesWhatIsThereAndThrowsAClassForEachFailure) {
    const KZMBasUtlFilePath path("", "fé");
    char read[8] = "";
    KZMBasUtlRawFile(path, FileMode::kUpdate).Write("abcdef", 6);
    EXPECT_TRUE(std::ifstream("fé").good());  // the C library's name for it
    KZMBasUtlRawFile updated(path, FileMode::kUpdate);
    updated.Seek(2);
    updated.Write("XY", 2);
    updated.Seek(0);
    updated.Read(read, 6);
    EXPECT_STREQ(read, "abXYef");
    updated.Seek(std::int64_t{5} << 30);  // beyond 32 bits
    EXPECT_EQ(Thrown([&] { updated.Read(read, 1); }), "304");
    KZMBasUtlRawFile file(path, FileMode::kRead);
    EXPECT_EQ(Thrown([&] { file.Write("x", 1); }), "307");
    EXPECT_EQ(Thrown([&] { file.Seek(-1); }), "SetFilePointer");
    file.Close();
    EXPECT_EQ(Thrown([&] { file.Read(read, 1); }), "303");
    EXPECT_EQ(Thrown([&] { file.Close(); }), "CloseHandle");
    KZMBasUtlRawFile replaced(path, FileMode::kReplace);
    EXPECT_EQ(Thrown([&] { replaced.Read(read, 1); }), "304");
}

// Takes two single bytes, then what it is told to.
class Grudging : public platform::File {
public:
    explicit Grudging(int last) : m_last(last) {}
    std::int64_t Seek(std::int64_t) override { return -1; }  // looks like a failure, gives no error
    std::ptrdiff_t Read(void*, std::size_t) override { return 0; }
    std::ptrdiff_t Write(const void*, std::size_t) override { return ++m_writes < 3 ? 1 : m_last; }
    bool Close() override { return true; }

private:
    int m_last, m_writes = 0;
};

TEST(RawFileTransfer, GoesOnUntilNothingIsMissing) {
    for (const auto& [last, error] : {std::pair{1, ""}, {0, "308"}, {-1, "307"}}) {
        KZMBasUtlRawFile file(std::make_unique<Grudging>(last));
        EXPECT_EQ(Thrown([&] { file.Write("abc", 3); }), error);
        EXPECT_EQ(Thrown([&] { file.Seek(0xFFFFFFFF); }), "");
    }
}

}  // namespace
