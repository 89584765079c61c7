#include <errors/KZMBasUtlReadError.h>
#include <errors/KZMBasUtlShortRead.h>
#include <errors/KZMBasUtlShortWrite.h>
#include <errors/KZMBasUtlSystemError.h>
#include <errors/KZMBasUtlWriteError.h>
#include <files/KZMBasUtlRawFile.h>
#include <files/working_directory.h>

#include <string>
#include <vector>

namespace {

using platform::FileMode;

class RawFile : public InOwnDirectory {};

// What the call throws, by exact class: the error's text and "Short" classes by their own.
template <class Call>
std::string Thrown(Call call) {
    const auto site = [](const KZMBasException& e) {
        EXPECT_STREQ(e.ThrownFile(), "KZMBasUtlRawFile.cpp");
        EXPECT_GT(e.ThrownLine(), 0);
    };
    try {
        call();
    } catch (const KZMBasUtlSystemError& e) {
        site(e);
        EXPECT_NE(e.GetSystemErrorCode().Number(), 0);
        return e.GetServiceName();
    } catch (const KZMBasUtlReadError& e) {
        site(e);
        EXPECT_NE(e.GetSystemErrorCode().Number(), 0);
        return "read";
    } catch (const KZMBasUtlWriteError& e) {
        site(e);
        EXPECT_NE(e.GetSystemErrorCode().Number(), 0);
        return "write";
    } catch (const KZMBasUtlShortRead& e) {
        site(e);
        return "short read";
    } catch (const KZMBasUtlShortWrite& e) {
        site(e);
        return "short write";
    }
    return "";
}

TEST_F(RawFile, WhatCannotBeOpenedNamesTheServiceAndTheReason) {
    std::filesystem::create_directory("d");
    MakeFile("f", "x");
    struct Case {
        const char *directory, *file;
        FileMode mode;
    };
    const Case cases[] = {{"", "missing", FileMode::kRead},
                          {"", "d", FileMode::kRead},
                          {"", "d", FileMode::kUpdate},
                          {"d", "", FileMode::kReplace},
                          {"missing", "f", FileMode::kReplace},
                          {"q:/", "f", FileMode::kUpdate},
                          {"", "http://host/f", FileMode::kUpdate},
                          {"", "", FileMode::kRead},
                          {"", "Network connectors", FileMode::kReplace}};
    for (const Case& each : cases) {
        SCOPED_TRACE(std::string(each.directory) + " | " + each.file);
        const KZMBasUtlFilePath path(each.directory, each.file);
        EXPECT_EQ(Thrown([&] { KZMBasUtlRawFile(path, each.mode); }), "CreateFile");
    }
    try {
        KZMBasUtlRawFile({"", "missing"}, FileMode::kRead);
    } catch (const KZMBasUtlSystemError& error) {
        EXPECT_EQ(error.GetSystemErrorCode().Number(), 2);  // no such file, on both systems
    }
}

TEST_F(RawFile, KeepsOrReplacesWhatIsThereAndReadsItBack) {
    const KZMBasUtlFilePath path("", "f");
    char read[8] = "";
    KZMBasUtlRawFile(path, FileMode::kUpdate).Write("abcdef", 6);
    {
        KZMBasUtlRawFile file(path, FileMode::kUpdate);
        file.Seek(2);
        file.Write("XY", 2);
        file.Write(nullptr, 0);
        file.Seek(0);
        file.Read(read, 6);
        EXPECT_STREQ(read, "abXYef");
        file.Seek(std::int64_t{5} << 30);  // beyond 32 bits
        EXPECT_EQ(Thrown([&] { file.Read(read, 1); }), "short read");
    }
    KZMBasUtlRawFile file(path, FileMode::kReplace);
    EXPECT_EQ(Thrown([&] { file.Read(read, 1); }), "short read");
}

TEST_F(RawFile, FailingCallsThrowTheirOwnClass) {
    MakeFile("f", "abc");
    KZMBasUtlRawFile file({"", "f"}, FileMode::kRead);
    char read[8] = "";
    EXPECT_EQ(Thrown([&] { file.Read(read, 5); }), "short read");
    EXPECT_STREQ(read, "abc");
    EXPECT_EQ(Thrown([&] { file.Write("x", 1); }), "write");
    EXPECT_EQ(Thrown([&] { file.Seek(-1); }), "SetFilePointer");
    file.Close();
    EXPECT_EQ(Thrown([&] { file.Read(read, 1); }), "read");
    EXPECT_EQ(Thrown([&] { file.Write("x", 1); }), "write");
    EXPECT_EQ(Thrown([&] { file.Seek(0); }), "SetFilePointer");
    EXPECT_EQ(Thrown([&] { file.Close(); }), "CloseHandle");
}

// Transfers the given numbers of bytes call by call, -1 being a failure, and 0 from then on.
class InPieces : public platform::File {
public:
    InPieces(std::vector<int> pieces, std::vector<std::size_t>& asked)
        : m_pieces(std::move(pieces)), m_asked(asked) {}
    std::int64_t Seek(std::int64_t) override {
        platform::SetLastError(0);
        return -1;  // as a position that reads like a failure
    }
    std::ptrdiff_t Read(void* buffer, std::size_t size) override {
        const std::ptrdiff_t n = Next(size);
        for (std::ptrdiff_t i = 0; i < n; ++i) static_cast<char*>(buffer)[i] = m_next++;
        return n;
    }
    std::ptrdiff_t Write(const void* buffer, std::size_t size) override {
        const std::ptrdiff_t n = Next(size);
        for (std::ptrdiff_t i = 0; i < n; ++i)
            EXPECT_EQ(static_cast<const char*>(buffer)[i], m_next++);
        return n;
    }
    bool Close() override { return true; }

private:
    std::ptrdiff_t Next(std::size_t size) {
        m_asked.push_back(size);
        const std::size_t call = m_asked.size() - 1;
        const int n = call < m_pieces.size() ? m_pieces[call] : 0;
        if (n < 0) platform::SetLastError(5);
        return n;
    }

    std::vector<int> m_pieces;
    std::vector<std::size_t>& m_asked;
    char m_next = 'a';
};

TEST(RawFileTransfer, GoesOnUntilNothingIsMissing) {
    struct Case {
        std::vector<int> pieces;
        std::vector<std::size_t> asked;
        const char *read, *write;
    };
    const Case cases[] = {{{6}, {6}, "", ""},
                          {{3, 1, 2}, {6, 3, 2}, "", ""},
                          {{3, 0}, {6, 3}, "short read", "short write"},
                          {{0}, {6}, "short read", "short write"},
                          {{3, -1}, {6, 3}, "read", "write"}};
    for (const Case& each : cases) {
        std::vector<std::size_t> asked;
        char buffer[7] = "";
        KZMBasUtlRawFile source(std::make_unique<InPieces>(each.pieces, asked));
        EXPECT_EQ(Thrown([&] { source.Read(buffer, 6); }), each.read);
        EXPECT_EQ(asked, each.asked);
        EXPECT_EQ(std::string(buffer), std::string("abcdef").substr(0, std::string(buffer).size()));

        asked.clear();
        KZMBasUtlRawFile target(std::make_unique<InPieces>(each.pieces, asked));
        EXPECT_EQ(Thrown([&] { target.Write("abcdef", 6); }), each.write);
        EXPECT_EQ(asked, each.asked);
    }
}

TEST(RawFileTransfer, APositionThatReadsLikeAFailureIsNone) {
    std::vector<std::size_t> asked;
    KZMBasUtlRawFile file(std::make_unique<InPieces>(std::vector<int>{}, asked));
    EXPECT_EQ(Thrown([&] { file.Seek(0xFFFFFFFF); }), "");
}

}  // namespace
