#pragma once
#include <cow/cow_String.h>

class KZMBasUtlFilePath;

// Directory names in host form, whose separator is the backslash on every system. Their encoding is
// that of the process's narrow texts (docs/file-paths.md). Where the system
// has no drives (Linux), its file system is the drive Z: and "/home/a" is "Z:\home\a", as a Windows
// program sees it there; other drives and network shares do not exist then.
class KZM_API KZMBasUtlDirPathUtils {
public:
    // Without the backslash at its end, but only one; a drive root becomes letter and colon, which
    // names another place. A slash at the end stays.
    static cow_String TrimSeparator(const cow_String& dir);

    static cow_String AddSeparator(const cow_String& dir);  // with a backslash at its end

    // Whether there is such a directory; such a file that is none. Either separator may be used. A
    // name that cannot be reached, and an empty one, give false. They ask the system on each call.
    static bool CheckDirectory(const cow_String& dir);
    static bool CheckFile(const cow_String& file);
    static bool CheckDirectory(const KZMBasUtlFilePath& dir);  // or a KZMBasUtlFilePathCae
    static bool CheckFile(const KZMBasUtlFilePath& file);

    // The name under which the system itself, and so any other library, knows the file: "/home/a"
    // for "Z:\home\a" on Linux. Empty if the system cannot have such a file.
    static cow_String NativeName(const cow_String& path);
};

// The working directory of the process in host form, without a separator at its end unless it is
// the root of a drive. Once the directory has been removed: a name that cannot exist.
KZM_API cow_String KZMBasUtlgetcwd();

KZM_API cow_String getdevice();  // the current drive, "C:": the first two characters of the above

// Replaces one character by another: each occurrence of `from` has its first character overwritten
// with the first one of `to`, and the search goes on one character behind. Made for texts of one
// character; of longer ones only the first character changes, so ("XXX", "XX", "Y") gives "YYX".
// Nothing changes, and a shared text stays shared, if nothing is found or either text is empty: an
// empty `to` has no character to write, and its zero byte would cut the text.
KZM_API cow_String& substitute(cow_String& text, const char* from, const char* to);
