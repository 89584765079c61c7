#pragma once
#include <cow/cow_String.h>

#include <string_view>

namespace platform {
enum class PathQuestion : int;
}

// The location of a file, split once, at construction: the directory to resolve it against, the
// directory part, the name and the extension. It gives the parts or the whole in host form
// (backslashes, on every system; see KZMBasUtlDirPathUtils) or, after Portable(), with slashes.
//
//     KZMBasUtlFilePath path("results", "job/beam.odb");  // the current directory is Z:\work
//     path.AbsolutePathName();                            // Z:\work\results\job\beam.odb
//
// URLs, and names that begin with the network connector of the host's file browser, are kept whole:
// every text below except Directory and Extension is then that whole text, and all queries answer
// false. "." and ".." inside a path stay as they are. Copies share the texts.
class KZM_API KZMBasUtlFilePath {
public:
    // The empty location, or as SetFilePath.
    KZMBasUtlFilePath();
    KZMBasUtlFilePath(cow_String directory, cow_String file);
    // Copies share the texts: O(1).
    KZMBasUtlFilePath(const KZMBasUtlFilePath& other);
    KZMBasUtlFilePath& operator=(const KZMBasUtlFilePath& other);
    KZMBasUtlFilePath& operator=(KZMBasUtlFilePath&& other);  // shares; `other` keeps its value
    ~KZMBasUtlFilePath();

    // Replaces the whole value. The directory is made absolute: "" and "." are the current
    // directory, "C:name" is seen from the current directory of that drive. A file that is itself
    // absolute stands for itself, the directory is then ignored; "C:name" as the file is no more
    // than a name, since only directories are seen from a drive. Asks the system for no more than
    // current directories; the file need not exist. A URL or network name as the file is kept
    // without the directory, as the directory it is joined to the file with a slash. A translated
    // network prefix is kept in its plain form.
    void SetFilePath(cow_String directory, cow_String file);

    // Turn the separators of directories and base name; the extension stays as it is, even with a
    // separator in it.
    KZMBasUtlFilePath& Native();
    KZMBasUtlFilePath& Portable();

    cow_String PathName() const;   // directory and name as given, not made absolute
    cow_String FileName() const;   // base name and extension
    cow_String BaseName() const;   // up to the last dot: "" for ".profile"
    cow_String Extension() const;  // the last dot and what follows it, or ""
    cow_String Directory() const;  // as given in the file text, with a separator at its end, or ""
    // Resolved when the location was set: a later change of the current directory does not move it.
    // The directory has a separator at its end.
    cow_String AbsoluteDirectoryPath() const;
    cow_String AbsolutePathName() const;

    // Whether the text was kept whole, as a URL or as a name of the network browser.
    bool IsUrl() const { return m_url; }
    bool IsRemote() const { return m_remote; }

    // Ask the system about the absolute path on each call. What cannot be reached gives false. The
    // last three are about permissions; a program may still lose the file before it opens it.
    bool Exists() const;
    bool IsDir() const;
    bool IsReadable() const;
    bool IsWriteable() const;
    bool IsExecutable() const;

    // Whether the path begins with "Network connectors", as written here or as the user sees it
    // translated. Letter case counts, and no separator has to follow.
    static bool IsPrefixRemoteFileAccessor(const cow_String& path);

    // The same parts in the same form; paths to one file may differ.
    friend bool operator==(const KZMBasUtlFilePath& a, const KZMBasUtlFilePath& b) {
        return a.m_url == b.m_url && a.m_remote == b.m_remote &&
               a.m_baseDirectory == b.m_baseDirectory && a.m_directory == b.m_directory &&
               a.m_baseName == b.m_baseName && a.m_extension == b.m_extension;
    }

protected:
    // Takes the network connector, plain or as translated, off the front; other texts stay.
    void TrimPrefixNetworkConnectors(cow_String& path);

private:
    friend struct kzm_Layout;
    bool Whole() const { return m_url || m_remote; }
    void KeepWhole(cow_String& directory, cow_String& file);
    void Split(cow_String& directory, cow_String& file);
    std::string_view JoiningBase() const;
    bool Ask(platform::PathQuestion question) const;
    KZMBasUtlFilePath& ReplaceSeparators(const char* from, const char* to);

    bool m_url;
    bool m_remote;
    cow_String m_baseDirectory;  // absolute, with a separator at its end
    cow_String m_directory;      // "" or with a separator at its end
    cow_String m_baseName;       // the whole path if one of the flags is set
    cow_String m_extension;
};
