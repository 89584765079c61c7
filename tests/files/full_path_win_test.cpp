#include <files/KZMBasUtlDirPathUtils.h>
#include <files/KZMBasUtlFilePath.h>
#include <files/working_directory.h>
#include <windows.h>

namespace {

class WindowsPath : public InOwnDirectory {};

TEST_F(WindowsPath, AbsolutePathsAreThoseOfTheSystem) {
    for (const char* file : {"f.tar.gz", "a/b.c", "a\\b", ".profile", "C:\\w\\x.y", "Z:/t/u"}) {
        char own[MAX_PATH];
        ASSERT_NE(GetFullPathNameA(file, MAX_PATH, own, nullptr), 0u);
        EXPECT_EQ(KZMBasUtlFilePath("", file).AbsolutePathName(), own);
    }
    for (const char* directory : {"s", "\\s", "C:/w", "q:s", ".", "\\\\h\\s\\t"}) {
        char own[MAX_PATH];
        ASSERT_NE(GetFullPathNameA(directory, MAX_PATH, own, nullptr), 0u);
        EXPECT_EQ(KZMBasUtlFilePath(directory, "").AbsoluteDirectoryPath(),
                  KZMBasUtlDirPathUtils::AddSeparator(own));
    }
}

}  // namespace
