#include <files/KZMBasUtlDirPathUtils.h>
#include <files/KZMBasUtlFilePath.h>
#include <files/path_query.h>
#include <platform/platform.h>

#include <string_view>

namespace {

bool EndsInSeparator(std::string_view dir) { return dir.ends_with('\\'); }

}  // namespace

cow_String KZMBasUtlDirPathUtils::TrimSeparator(const cow_String& dir) {
    return EndsInSeparator(dir) ? dir.Substr(0, dir.Length() - 1) : dir;
}

cow_String KZMBasUtlDirPathUtils::AddSeparator(const cow_String& dir) {
    cow_String separated = dir;
    if (!EndsInSeparator(separated)) separated += "\\";
    return separated;
}

bool KZMBasUtlDirPathUtils::CheckDirectory(const cow_String& dir) {
    return AskSystem(platform::PathQuestion::kIsDirectory, dir);
}

bool KZMBasUtlDirPathUtils::CheckFile(const cow_String& file) {
    return AskSystem(platform::PathQuestion::kExists, file) && !CheckDirectory(file);
}

bool KZMBasUtlDirPathUtils::CheckDirectory(const KZMBasUtlFilePath& dir) { return dir.IsDir(); }

bool KZMBasUtlDirPathUtils::CheckFile(const KZMBasUtlFilePath& file) {
    return file.Exists() && !file.IsDir();
}

cow_String KZMBasUtlDirPathUtils::NativeName(const cow_String& path) {
    if (HasZeroByte(path)) return cow_String();
    return cow_String(platform::NativePath(path.CStr()));
}

cow_String KZMBasUtlgetcwd() { return cow_String(platform::WorkingDirectory()); }

cow_String getdevice() { return KZMBasUtlgetcwd().Substr(0, 2); }

cow_String& substitute(cow_String& text, const char* from, const char* to) {
    if (!from || !*from || !to || !*to) return text;
    const char replacement = *to;
    int at = text.Find(from, 0);
    if (at < 0) return text;
    if (!from[1]) {
        const char searched = *from;
        const int length = text.Length();
        for (char* c = &text[0] + at; at < length; ++at, ++c)
            if (*c == searched) *c = replacement;
        return text;
    }
    const cow_String searched(from);  // `from` may be a piece of the text
    for (; at >= 0; at = text.Find(searched.CStr(), at + 1)) text[at] = replacement;
    return text;
}
