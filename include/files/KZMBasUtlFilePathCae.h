#pragma once
#include <files/KZMBasUtlFilePath.h>

// A file location for code that only names files: splits and resolves as KZMBasUtlFilePath, and is
// accepted wherever that class is, which offers the parts and the queries.
class KZM_API KZMBasUtlFilePathCae {
public:
    // As KZMBasUtlFilePath::SetFilePath.
    KZMBasUtlFilePathCae(cow_String directory, cow_String file);
    // Copies share the texts: O(1).
    KZMBasUtlFilePathCae(const KZMBasUtlFilePathCae& other);
    KZMBasUtlFilePathCae& operator=(const KZMBasUtlFilePathCae& other);
    KZMBasUtlFilePathCae& operator=(KZMBasUtlFilePathCae&& other);  // shares
    ~KZMBasUtlFilePathCae();

    // As in KZMBasUtlFilePath: slashes from here on, and the whole location.
    KZMBasUtlFilePathCae& Portable();
    cow_String AbsolutePathName() const;

    // The location with its parts and queries; it ends with this object.
    operator const KZMBasUtlFilePath&() const { return m_path; }

private:
    KZMBasUtlFilePath m_path;
};
