#include <files/KZMBasUtlFilePathCae.h>

KZMBasUtlFilePathCae::KZMBasUtlFilePathCae(cow_String directory, cow_String file)
    : m_path(directory, file) {}

KZMBasUtlFilePathCae::KZMBasUtlFilePathCae(const KZMBasUtlFilePathCae& other) = default;

KZMBasUtlFilePathCae& KZMBasUtlFilePathCae::operator=(const KZMBasUtlFilePathCae& other) = default;

KZMBasUtlFilePathCae& KZMBasUtlFilePathCae::operator=(KZMBasUtlFilePathCae&& other) {
    return *this = static_cast<const KZMBasUtlFilePathCae&>(other);
}

KZMBasUtlFilePathCae::~KZMBasUtlFilePathCae() {}

KZMBasUtlFilePathCae& KZMBasUtlFilePathCae::Portable() {
    m_path.Portable();
    return *this;
}

cow_String KZMBasUtlFilePathCae::AbsolutePathName() const { return m_path.AbsolutePathName(); }
