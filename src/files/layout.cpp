// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <files/KZMBasUtlFilePath.h>

#include <cstddef>

struct kzm_Layout {
    using Path = KZMBasUtlFilePath;
    static_assert(offsetof(Path, m_url) == 0);
    static_assert(offsetof(Path, m_remote) == 1);
    static_assert(offsetof(Path, m_baseDirectory) == sizeof(void*));
    static_assert(offsetof(Path, m_directory) == 3 * sizeof(void*));
    static_assert(offsetof(Path, m_baseName) == 5 * sizeof(void*));
    static_assert(offsetof(Path, m_extension) == 7 * sizeof(void*));
    static_assert(sizeof(Path) == 9 * sizeof(void*));
};
