#include <coreutils/atr_format.h>
#include <files/KZMBasUtlDirPathUtils.h>
#include <files/KZMBasUtlFilePathCae.h>
#include <files/KZMBasUtlUrlParser.h>
#include <files/working_directory.h>
#include <support/memory_failure.h>
#include <support/refused_new.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <sstream>
#include <string>
#include <utility>

namespace {

using Path = KZMBasUtlFilePath;
using Utils = KZMBasUtlDirPathUtils;

// The fields of "a|b|c", where "@" stands for the working directory and "?" for its drive.
template <std::size_t N>
std::array<cow_String, N> Fields(std::string row) {
    const auto replace = [&row](char sign, const cow_String& by) {
        for (std::size_t at; (at = row.find(sign)) != row.npos;) row.replace(at, 1, by.CStr());
    };
    replace('@', KZMBasUtlgetcwd());
    replace('?', getdevice());
    std::istringstream in(row);
    std::array<cow_String, N> fields;
    for (cow_String& field : fields)
        if (std::getline(in, row, '|')) field = row.c_str();
    return fields;
}

class FilePath : public InOwnDirectory {};

// Directory and file text, then absolute directory, directory, base name and extension.
TEST_F(FilePath, SplitsIntoBaseDirectoryNameAndExtension) {
    for (const char* row :
         {"|f.tar.gz|@\\||f.tar|.gz", ".|f|@\\||f|", "sub/|a/b.c|@\\sub\\a\\|a\\|b|.c",
          "/d|x|?\\d\\||x|", "/|x|?\\||x|", "C:/w|d.e/n|C:\\w\\d.e\\|d.e\\|n|", "c:\\|n|c:\\||n|",
          "q:s|x|q:\\s\\||x|", "//h/s|x|\\\\h\\s\\||x|", "1:|x|@\\1:\\||x|",
          "..|../x|@\\..\\..\\|..\\|x|", "C:\\w|D:\\a\\b.c|D:\\a\\|D:\\a\\|b|.c",
          "C:\\w|//h/s/b.c|\\\\h\\s\\|\\\\h\\s\\|b|.c", "C:\\w|\\a\\b|C:\\w\\a\\|\\a\\|b|",
          "C:\\w|D:b.c|C:\\w\\||D:b|.c", "C:\\w|dir/|C:\\w\\dir\\|dir\\||",
          "C:\\w|.profile|C:\\w\\|||.profile", "C:\\w|..|C:\\w\\||.|.",
          "C:\\w|a/.|C:\\w\\a\\|a\\|.|"}) {
        SCOPED_TRACE(row);
        const auto [base, text, absolute, directory, name, extension] = Fields<6>(row);
        const Path path(base, text);
        EXPECT_EQ(path.Directory(), directory);
        EXPECT_TRUE(path.BaseName() == name && path.Extension() == extension);
        EXPECT_EQ(path.AbsoluteDirectoryPath(), absolute);
    }
}

// The system tells no longer directories of a drive, which then stands at its root.
TEST_F(FilePath, DirectoriesOnADriveFollowItsCurrentDirectoryUpTo259Characters) {
    const auto own = std::filesystem::current_path();
    const std::string deep(250, 'd');
    std::filesystem::create_directory(deep);
    const std::pair<std::string, const char*> cases[] = {{".", "?s|@\\s\\x"},
                                                         {".", "?|@\\x"},
                                                         {deep, "?s|?\\s\\x"},
                                                         {"/", "s|?\\s\\x"},
                                                         {"/", "/s|?\\s\\x"}};
    for (const auto& [current, row] : cases) {
        std::filesystem::current_path(current);
        EXPECT_EQ(std::string_view(KZMBasUtlgetcwd()).ends_with("\\" + deep), current == deep);
        const auto [directory, absolute] = Fields<2>(row);
        EXPECT_EQ(Path(directory, "x").AbsolutePathName(), absolute) << row;
    }
    std::filesystem::current_path(own);
    std::filesystem::remove(deep);  // whose whole name is too long for some systems
}

// Directory, file, what is kept; then url, remote or both.
TEST_F(FilePath, UrlsAndNetworkNamesAreKeptWhole) {
    Path path("C:/before", "d/e.f");
    for (const char* row :
         {"sub|http://a/b/c.d|http://a/b/c.d|u", "ftp://a|b\\c.d|ftp://a/b\\c.d|u",
          "ftp://a/|b|ftp://a/b|u", "ftp://a\\|b|ftp://a\\b|u", "ftp://a||ftp://a|u",
          "sub|Network connectors/a\\b.c|Network connectors/a\\b.c|r",
          "sub|Network connectorstest|Network connectorstest|r",
          "Network connectors|a|Network connectors/a|r",
          "ftp://a|Network connectors/b|Network connectors/b|ur",
          "Network connectors|http://a|http://a|ur"}) {
        SCOPED_TRACE(row);
        const auto [directory, file, whole, kind] = Fields<4>(row);
        path.SetFilePath(directory, file);
        EXPECT_TRUE(path.IsUrl() == (kind[0] == 'u') && path.IsRemote() == (kind != "u"));
        path.Native().Portable();
        for (const cow_String& text : {path.PathName(), path.FileName(), path.AbsolutePathName(),
                                       path.AbsoluteDirectoryPath()})
            EXPECT_EQ(text, whole);
        EXPECT_FALSE(path.Exists() || path.IsDir() || path.IsReadable() || path.IsWriteable());
    }
}

TEST_F(FilePath, NetworkNamesAreStoredUntranslatedAndComparedByLetter) {
    atr_setTranslator([](const char* text) -> const char* {
        return std::string_view(text) == "Network connectors" ? "Liens" : nullptr;
    });
    for (const char* row : {"|Liens/a", "|Network connectors/a", "Liens|a"}) {
        const auto [directory, file] = Fields<2>(row);
        EXPECT_EQ(Path(directory, file).PathName(), "Network connectors/a") << row;
    }
    EXPECT_FALSE(Path("", "liens/a").IsRemote());
    atr_setTranslator(
        [](const char* text) { return std::string_view(text).ends_with('/') ? "L/" : ""; });
    EXPECT_TRUE(Path::IsPrefixRemoteFileAccessor("L/a") && !Path::IsPrefixRemoteFileAccessor("L"));
    atr_setTranslator([](const char*) { return ""; });  // says nothing, so it marks nothing
    EXPECT_FALSE(Path::IsPrefixRemoteFileAccessor("a"));
    atr_setTranslator(nullptr);
    EXPECT_EQ(Path("sub", "Liens/a").Directory(), "Liens\\");
    for (const char* text : {"", ".", "network connectors", "Network conn"})
        EXPECT_FALSE(Path::IsPrefixRemoteFileAccessor(text)) << text;
}

TEST_F(FilePath, PathsAreEqualWhereAllTheirPartsAre) {
    const Path paths[] = {{"C:/a", "b.c"},    {"C:/x", "b.c"},
                          {"C:/a", "d/b.c"},  {"C:/a", "x.c"},
                          {"C:/a", "b.x"},    {"ftp://", "Network connectors"},
                          {"C:/a", "ftp://"}, {"", "Network connectors"}};
    for (const Path& a : paths)
        for (const Path& b : paths) EXPECT_EQ(a == b, &a == &b);
}

TEST_F(FilePath, PortableAndNativeLeaveTheExtensionAndCopiesAlone) {
    Path path("C:/w", "/a/b.c");
    const Path before(path);
    EXPECT_EQ(path.Portable().PathName(), "/a/b.c");
    EXPECT_EQ(path.AbsolutePathName(), "C:/w//a/b.c");  // only backslashes are joined
    EXPECT_EQ(before.AbsolutePathName(), "C:\\w\\a\\b.c");
    EXPECT_EQ(path.Native(), before);
    EXPECT_EQ(KZMBasUtlFilePathCae("C:\\w", "a\\b.c").Portable().AbsolutePathName(), "C:/w/a/b.c");
}

// Directory, file; then e(xists), d(irectory), (e)x(ecutable). Names are in the encoding of the C
// library, in which each letter of the accented ones may be one character or two.
TEST_F(FilePath, QueriesAskTheSystem) {
    std::filesystem::create_directory("d");
    ASSERT_EQ(std::rename("d", "dé"), 0);
    for (const char* name : {"plän.txt", "run.exe"}) std::ofstream(name) << "x";
    std::filesystem::permissions("run.exe", std::filesystem::perms::owner_exec,
                                 std::filesystem::perm_options::add);
    for (const char* row :
         {"|plän.txt|e", ".|run.exe|ex", "dé|../plän.txt|e", "|dé|edx", "dé||edx", "|missing|",
          "missing|plän.txt|", "plän.txt||", "q:/|plän.txt|", "//no-such-host/share|plän.txt|"}) {
        SCOPED_TRACE(row);
        const auto [directory, file, flags] = Fields<3>(row);
        const std::string_view kind(flags);
        Path path(directory, file);
        for (int form = 0; form < 2; ++form, path.Portable()) {
            EXPECT_EQ(path.Exists(), !kind.empty());
            EXPECT_EQ(path.IsReadable() && path.IsWriteable(), !kind.empty());
            EXPECT_EQ(path.IsExecutable(), kind.ends_with('x'));
            EXPECT_EQ(Utils::CheckDirectory(path), kind == "edx");
            EXPECT_EQ(Utils::CheckFile(path), !kind.empty() && kind != "edx");
        }
    }
    EXPECT_TRUE(Utils::CheckDirectory(getdevice() += "\\"));
    EXPECT_TRUE(Utils::CheckFile(cow_String("run.exe")) && !Utils::CheckFile(cow_String("dé")));
    EXPECT_FALSE(Utils::CheckFile(cow_String("run.exe\0x", 9)) || Utils::CheckFile(cow_String()));
    EXPECT_EQ(Utils::NativeName(cow_String("a\0b", 3)), "");
    ASSERT_EQ(chdir("dé"), 0);
    const cow_String name = Utils::NativeName(Path("", "../plän.txt").AbsolutePathName());
    EXPECT_TRUE(std::ifstream(name.CStr()).good());
}

TEST_WITH_REFUSALS(DirPathUtils, SeparatorsAtTheEnd) {
    for (const char* row :
         {"C:\\|C:|C:\\", "\\||\\", "a\\\\|a\\|a\\\\", "a/|a/|a/\\", "||\\", "a|a|a\\"}) {
        const auto [text, trimmed, added] = Fields<3>(row);
        EXPECT_EQ(Utils::TrimSeparator(text), trimmed) << row;
        EXPECT_EQ(Utils::AddSeparator(text), added) << row;
    }
}

TEST(DirPathUtils, SubstituteOverwritesTheFirstCharacterOfEachMatch) {
    for (const char* row : {"a/b//c|/|\\|a\\b\\\\c", "aXXb|XX|Y|aYXb", "XXX|XX|Y|YYX",
                            "XXX|X|YZ|YYY", "abc||Y|abc", "abc|b||abc", "aaa|a|a|aaa", "|a|b|"}) {
        const auto [before, from, to, after] = Fields<4>(row);
        cow_String text = before;
        EXPECT_EQ(&substitute(text, from.CStr(), to.CStr()), &text);
        EXPECT_EQ(text, after) << row;
    }
    cow_String text = "xyxy";
    const cow_String other = text;
    substitute(substitute(substitute(text, "\\", "/"), nullptr, "Y"), "x", nullptr);
    EXPECT_EQ(text.CStr(), other.CStr());  // a shared text is copied only for a match
    EXPECT_EQ(substitute(text, text.CStr() + 2, "z"), "zyzy");
}

TEST(UrlParser, AUrlBeginsWithASchemeOfTwoCharactersOrMore) {
    for (const char* text : {"file:///x", "svn+ssh-1.0://h", "h9://"})
        EXPECT_TRUE(KZMBasUtlUrlParser::IsUrl(text)) << text;
    for (const char* text : {"c://x", "a/b://c", "", "http:/a", "2h://a", " ab://c", "a;b://c"})
        EXPECT_FALSE(KZMBasUtlUrlParser::IsUrl(text)) << text;
}

}  // namespace
