#pragma once
#include <files/KZMBasUtlFilePath.h>

// A file location for code that only names files: splits and resolves as KZMBasUtlFilePath, and is
// accepted wherever that class is, which offers the parts and the queries.
class KZM_API KZMBasUtlFilePathCae {
public:
    KZMBasUtlFilePathCae(cow_String directory, cow_String file);
    KZMBasUtlFilePathCae(const KZMBasUtlFilePathCae& other);
    KZMBasUtlFilePathCae& operator=(const KZMBasUtlFilePathCae& other);
    KZMBasUtlFilePathCae& operator=(KZMBasUtlFilePathCae&& other);  // shares
    ~KZMBasUtlFilePathCae();

    KZMBasUtlFilePathCae& Portable();
    cow_String AbsolutePathName() const;

    operator const KZMBasUtlFilePath&() const { return m_path; }

private:
    KZMBasUtlFilePath m_path;
};
