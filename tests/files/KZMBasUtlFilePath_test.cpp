#include <coreutils/atr_format.h>
#include <files/KZMBasUtlDirPathUtils.h>
#include <files/KZMBasUtlFilePathCae.h>
#include <files/KZMBasUtlUrlParser.h>
#include <files/working_directory.h>
#include <support/memory_failure.h>

#include <string>
#include <utility>

namespace {

using Path = KZMBasUtlFilePath;
using Utils = KZMBasUtlDirPathUtils;

// In expected texts "@" stands for the working directory and "?" for its drive.
std::string Expanded(std::string text) {
    const auto replace = [&text](char sign, const cow_String& by) {
        for (std::size_t at; (at = text.find(sign)) != text.npos;)
            text.replace(at, 1, std::string_view(by));
    };
    replace('@', KZMBasUtlgetcwd());
    replace('?', getdevice());
    return text;
}

class FilePath : public InOwnDirectory {};

TEST_F(FilePath, SplitsIntoBaseDirectoryNameAndExtension) {
    struct Case {
        const char *directory, *file;
        const char *base, *dir, *name, *extension;
    };
    const Case cases[] = {{"", "f.tar.gz", "@\\", "", "f.tar", ".gz"},
                          {".", "f", "@\\", "", "f", ""},
                          {"sub", "a/b.c", "@\\sub\\", "a\\", "b", ".c"},
                          {"sub/", "b.c", "@\\sub\\", "", "b", ".c"},
                          {"/d", "x", "?\\d\\", "", "x", ""},
                          {"/", "x", "?\\", "", "x", ""},
                          {"C:/w", "d.e/n", "C:\\w\\", "d.e\\", "n", ""},
                          {"c:\\", "n", "c:\\", "", "n", ""},
                          {"q:", "x", "q:\\", "", "x", ""},
                          {"q:s", "x", "q:\\s\\", "", "x", ""},
                          {"//h/s", "x", "\\\\h\\s\\", "", "x", ""},
                          {"1:", "x", "@\\1:\\", "", "x", ""},
                          {"..", "../x", "@\\..\\", "..\\", "x", ""},
                          {"C:\\w", "D:\\a\\b.c", "", "D:\\a\\", "b", ".c"},
                          {"C:\\w", "//h/s/b.c", "", "\\\\h\\s\\", "b", ".c"},
                          {"C:\\w", "\\a\\b", "C:\\w\\", "\\a\\", "b", ""},
                          {"C:\\w", "D:b.c", "C:\\w\\", "", "D:b", ".c"},
                          {"C:\\w", "dir/", "C:\\w\\", "dir\\", "", ""},
                          {"C:\\w", ".profile", "C:\\w\\", "", "", ".profile"},
                          {"C:\\w", "a.", "C:\\w\\", "", "a", "."},
                          {"C:\\w", "..", "C:\\w\\", "", ".", "."},
                          {"C:\\w", ".", "C:\\w\\", "", ".", ""},
                          {"C:\\w", "a/.", "C:\\w\\", "a\\", ".", ""},
                          {"C:\\w", "", "C:\\w\\", "", "", ""}};
    for (const Case& each : cases) {
        SCOPED_TRACE(std::string(each.directory) + " | " + each.file);
        const Path path(each.directory, each.file);
        EXPECT_EQ(path.Directory(), each.dir);
        EXPECT_EQ(path.BaseName(), each.name);
        EXPECT_EQ(path.Extension(), each.extension);
        const std::string file = std::string(each.name) + each.extension;
        EXPECT_EQ(path.FileName(), file.c_str());
        EXPECT_EQ(path.PathName(), (each.dir + file).c_str());
        std::string joined = Expanded(each.base);
        if (joined.ends_with('\\') && *each.dir == '\\') joined.pop_back();
        EXPECT_EQ(path.AbsoluteDirectoryPath(), (joined += each.dir).c_str());
        EXPECT_EQ(path.AbsolutePathName(), (joined += file).c_str());
    }
}

TEST_F(FilePath, DriveRelativeNamesFollowTheCurrentDirectoryOfTheirDrive) {
    const std::string drive = getdevice().CStr();
    EXPECT_EQ(Path((drive + "s").c_str(), "x").AbsolutePathName(), Expanded("@\\s\\x").c_str());
    EXPECT_EQ(Path(drive.c_str(), "x").AbsolutePathName(), Expanded("@\\x").c_str());
    std::filesystem::current_path("/");
    EXPECT_EQ(KZMBasUtlgetcwd(), Expanded("?\\").c_str());
    for (const char* directory : {"s", "/s"})
        EXPECT_EQ(Path(directory, "x").AbsolutePathName(), Expanded("?\\s\\x").c_str());
}

TEST_F(FilePath, UrlsAndNetworkNamesAreKeptWhole) {
    struct Case {
        const char *directory, *file, *whole;
        bool url, remote;
    };
    const Case cases[] = {
        {"sub", "http://a/b/c.d", "http://a/b/c.d", true, false},
        {"ftp://a", "b\\c.d", "ftp://a/b\\c.d", true, false},
        {"ftp://a/", "b", "ftp://a/b", true, false},
        {"ftp://a\\", "b", "ftp://a\\b", true, false},
        {"ftp://a", "", "ftp://a", true, false},
        {"sub", "Network connectors/a\\b.c", "Network connectors/a\\b.c", false, true},
        {"sub", "Network connectorstest", "Network connectorstest", false, true},
        {"Network connectors", "a", "Network connectors/a", false, true},
        {"ftp://a", "Network connectors/b", "Network connectors/b", true, true},
        {"Network connectors", "http://a", "http://a", true, true}};
    Path path("C:/before", "d/e.f");
    for (const Case& each : cases) {
        SCOPED_TRACE(each.whole);
        path.SetFilePath(each.directory, each.file);
        EXPECT_EQ(path.IsUrl(), each.url);
        EXPECT_EQ(path.IsRemote(), each.remote);
        path.Native().Portable();
        for (const cow_String& text :
             {path.PathName(), path.FileName(), path.BaseName(), path.AbsoluteDirectoryPath(),
              path.AbsolutePathName(), path.Native().BaseName()})
            EXPECT_EQ(text, each.whole);
        EXPECT_EQ(path.Extension(), "");
        EXPECT_FALSE(path.Exists() || path.IsDir() || path.IsReadable() || path.IsWriteable());
    }
    path.SetFilePath("C:/after", "d/e.f");
    EXPECT_EQ(path, Path("C:/after", "d/e.f"));
}

TEST_F(FilePath, TranslatedNetworkNamesAreStoredUntranslated) {
    atr_setTranslator([](const char* text) -> const char* {
        return std::string_view(text) == "Network connectors" ? "Liens" : nullptr;
    });
    EXPECT_EQ(Path("", "Liens/a").PathName(), "Network connectors/a");
    EXPECT_EQ(Path("", "Network connectors/a").PathName(), "Network connectors/a");
    EXPECT_EQ(Path("Liens", "a").PathName(), "Network connectors/a");
    EXPECT_FALSE(Path("", "liens/a").IsRemote());
    atr_setTranslator([](const char*) { return ""; });  // says nothing, so it marks nothing
    EXPECT_FALSE(Path::IsPrefixRemoteFileAccessor("a"));
    atr_setTranslator(nullptr);
    EXPECT_EQ(Path("sub", "Liens/a").Directory(), "Liens\\");
}

TEST_F(FilePath, NetworkPrefixIsComparedByLetterOverItsLength) {
    for (const char* text : {"Network connectors", "Network connectorsX", "Network connectors/"})
        EXPECT_TRUE(Path::IsPrefixRemoteFileAccessor(text)) << text;
    for (const char* text : {"", ".", "network connectors", "Network conn", "a/Network connectors"})
        EXPECT_FALSE(Path::IsPrefixRemoteFileAccessor(text)) << text;
}

TEST_F(FilePath, PortableAndNativeLeaveTheExtension) {
    Path path("C:/w", "/a/b.c");
    EXPECT_EQ(path.AbsolutePathName(), "C:\\w\\a\\b.c");
    EXPECT_EQ(path.Portable().PathName(), "/a/b.c");
    EXPECT_EQ(path.AbsolutePathName(), "C:/w//a/b.c");  // only backslashes are joined
    EXPECT_EQ(path.Native(), Path("C:/w", "/a/b.c"));
    EXPECT_EQ(KZMBasUtlFilePathCae("C:\\w", "a\\b.c").Portable().AbsolutePathName(), "C:/w/a/b.c");
}

TEST_F(FilePath, CopiesAreIndependentAndMovedFromOnesStay) {
    Path a("C:/w", "a/b.c");
    Path b(a), c;
    b.Portable();
    EXPECT_EQ(a.PathName(), "a\\b.c");
    c = std::move(b);
    EXPECT_EQ(c, b);
    a.SetFilePath(a.AbsoluteDirectoryPath(), a.BaseName());
    EXPECT_EQ(a.AbsolutePathName(), "C:\\w\\a\\b");
}

TEST_F(FilePath, MemoryFailureKeepsTheFormerPath) {
    const Path before("C:/x", "y.z");
    ForEveryAllocationFailure(
        [&] { return before; },
        [](Path& path) { path.SetFilePath("sub/a", "long/enough/for/its/own/block.ext"); },
        [&](const Path& path, bool done) {
            EXPECT_EQ(path.Extension(), done ? ".ext" : before.Extension());
            EXPECT_EQ(path == before, !done);
        });
}

TEST_F(FilePath, QueriesAskTheSystem) {
    std::filesystem::create_directory("d");
    MakeFile("plain.txt", "x");
    MakeFile("run.exe", "x");
    std::filesystem::permissions("run.exe", std::filesystem::perms::owner_exec,
                                 std::filesystem::perm_options::add);
    struct Case {
        const char *directory, *file;
        bool exists, isDir, isExecutable;
    };
    const Case cases[] = {{"", "plain.txt", true, false, false},
                          {".", "run.exe", true, false, true},
                          {"d", "../plain.txt", true, false, false},
                          {"", "d", true, true, true},
                          {"d", "", true, true, true},
                          {"", "missing", false, false, false},
                          {"missing", "plain.txt", false, false, false},
                          {"plain.txt", "", false, false, false},
                          {"q:/", "plain.txt", false, false, false},
                          {"//no-such-host/share", "plain.txt", false, false, false}};
    for (const Case& each : cases) {
        SCOPED_TRACE(std::string(each.directory) + " | " + each.file);
        Path path(each.directory, each.file);
        for (int form = 0; form < 2; ++form, path.Portable()) {
            EXPECT_EQ(path.Exists(), each.exists);
            EXPECT_EQ(path.IsReadable() && path.IsWriteable(), each.exists);
            EXPECT_EQ(path.IsExecutable(), each.isExecutable);
            EXPECT_EQ(Utils::CheckDirectory(path), each.isDir);
            EXPECT_EQ(Utils::CheckFile(path), each.exists && !each.isDir);
        }
    }
    EXPECT_TRUE(Utils::CheckFile(KZMBasUtlFilePathCae("", "plain.txt")));
    EXPECT_TRUE(Utils::CheckDirectory("d") && Utils::CheckDirectory(getdevice() += "\\"));
    EXPECT_FALSE(Utils::CheckDirectory("") || Utils::CheckDirectory("plain.txt"));
    EXPECT_FALSE(Utils::CheckFile(cow_String("plain.txt\0x", 11)));
}

TEST_F(FilePath, NativeNamesOpenTheFile) {
    MakeFile("plain.txt", "x");
    const cow_String name = Utils::NativeName(Path("", "plain.txt").AbsolutePathName());
    EXPECT_EQ(std::filesystem::path(name.CStr()), std::filesystem::current_path() / "plain.txt");
    EXPECT_EQ(Utils::NativeName(cow_String("a\0b", 3)), "");
}

TEST(DirPathUtils, SeparatorsAtTheEnd) {
    struct Case {
        const char *text, *trimmed, *added;
    };
    const Case cases[] = {{"C:\\", "C:", "C:\\"}, {"\\", "", "\\"}, {"a\\\\", "a\\", "a\\\\"},
                          {"a/", "a/", "a/\\"},   {"", "", "\\"},   {"a", "a", "a\\"}};
    for (const Case& each : cases) {
        EXPECT_EQ(Utils::TrimSeparator(each.text), each.trimmed);
        EXPECT_EQ(Utils::AddSeparator(each.text), each.added);
    }
}

TEST(Substitute, OverwritesTheFirstCharacterOfEachMatch) {
    struct Case {
        const char *text, *from, *to, *result;
    };
    const Case cases[] = {{"a/b//c", "/", "\\", "a\\b\\\\c"},
                          {"aXXb", "XX", "Y", "aYXb"},
                          {"XXX", "XX", "Y", "YYX"},
                          {"XXX", "X", "YZ", "YYY"},
                          {"abc", "", "Y", "abc"},
                          {"abc", nullptr, "Y", "abc"},
                          {"abc", "b", "", "abc"},
                          {"abc", "b", nullptr, "abc"},
                          {"aaa", "a", "a", "aaa"},
                          {"", "a", "b", ""}};
    for (const Case& each : cases) {
        cow_String text = each.text;
        EXPECT_EQ(&substitute(text, each.from, each.to), &text);
        EXPECT_EQ(text, each.result);
    }
    cow_String text = "xyxy";
    substitute(text, text.CStr() + 2, "z");
    EXPECT_EQ(text, "zyzy");
}

TEST(Substitute, ASharedTextIsCopiedOnlyForAMatch) {
    cow_String text = "a/b";
    const cow_String other = text;
    substitute(text, "\\", "/");
    EXPECT_EQ(text.CStr(), other.CStr());
    substitute(text, "/", "\\");
    EXPECT_EQ(other, "a/b");
}

TEST(UrlParser, AUrlBeginsWithASchemeOfTwoCharactersOrMore) {
    for (const char* text : {"http://a", "file:///x", "svn+ssh://h", "h2://"})
        EXPECT_TRUE(KZMBasUtlUrlParser::IsUrl(text)) << text;
    for (const char* text :
         {"C:/a", "c://x", "a/b://c", "", "http:/a", "2h://a", "http", " ab://c"})
        EXPECT_FALSE(KZMBasUtlUrlParser::IsUrl(text)) << text;
}

}  // namespace
