#include <coreutils/atr_format.h>
#include <files/KZMBasUtlDirPathUtils.h>
#include <files/KZMBasUtlFilePath.h>
#include <files/KZMBasUtlUrlParser.h>
#include <files/path_query.h>
#include <platform/letters.h>

#include <cstdint>
#include <initializer_list>
#include <new>
#include <string_view>

namespace {

constexpr char kNetwork[] = "Network connectors";
constexpr char kNetworkDirectory[] = "Network connectors/";

enum class NetworkPrefix { kNone, kTranslated, kPlain };

std::string_view AsUserSees(const char* text) { return atr_translate(KZMBasStringModeUser, text); }

// The first match in this order. A translation without any text matches nothing.
NetworkPrefix NetworkPrefixOf(std::string_view path) {
    const auto matches = [path](std::string_view prefix) {
        return !prefix.empty() && path.starts_with(prefix);
    };
    if (path.empty() || path == ".") return NetworkPrefix::kNone;
    if (matches(AsUserSees(kNetwork))) return NetworkPrefix::kTranslated;
    if (matches(kNetwork)) return NetworkPrefix::kPlain;
    if (matches(AsUserSees(kNetworkDirectory))) return NetworkPrefix::kTranslated;
    return NetworkPrefix::kNone;
}

bool BeginsWithDrive(std::string_view path) {
    return path.size() >= 2 && IsLetter(path[0]) && path[1] == ':';
}

bool IsShare(std::string_view path) { return path.starts_with("\\\\"); }

bool IsAbsolute(std::string_view path) {
    return IsShare(path) || (BeginsWithDrive(path) && path.substr(2).starts_with('\\'));
}

bool EndsInSeparator(std::string_view path) { return path.ends_with('\\') || path.ends_with('/'); }

// One text with room for all parts from the start.
cow_String Joined(std::initializer_list<std::string_view> parts) {
    std::size_t length = 0;
    for (std::string_view part : parts) length += part.size();
    if (length == 0) return cow_String();
    if (length >= INT32_MAX) throw std::bad_alloc();
    atr_String joined(static_cast<int>(length) + 1, atr_String::PreSize);
    for (std::string_view part : parts) joined.Append(part.data(), static_cast<int>(part.size()));
    return joined;
}

// Shares if the piece is the whole text.
cow_String Piece(const cow_String& text, std::size_t from, std::size_t n) {
    if (from == 0 && n == std::string_view(text).size()) return text;
    return text.Substr(static_cast<int>(from), static_cast<int>(n));
}

cow_String WorkingDirectoryOfDrive(char letter) {
    const int drive = (letter >= 'a' ? letter - 'a' : letter - 'A') + 1;
    const std::string directory = platform::WorkingDirectory(drive);
    return directory.empty() ? Joined({{&letter, 1}, ":\\"}) : cow_String(directory);
}

// Absolute, with a separator at its end. The text has no slashes.
cow_String AbsoluteBase(const cow_String& directory) {
    std::string_view rest = directory;
    if (IsAbsolute(rest)) return KZMBasUtlDirPathUtils::AddSeparator(directory);
    cow_String root;
    if (BeginsWithDrive(rest)) {
        root = WorkingDirectoryOfDrive(rest[0]);
        rest.remove_prefix(2);
    } else if (rest.starts_with('\\')) {
        root = getdevice();
    } else {
        root = KZMBasUtlgetcwd();
        if (rest == ".") rest = {};
    }
    if (rest.empty()) return KZMBasUtlDirPathUtils::AddSeparator(root);
    const bool meets = rest[0] == '\\' || EndsInSeparator(root);
    return Joined({root, meets ? "" : "\\", rest, EndsInSeparator(rest) ? "" : "\\"});
}

}  // namespace

KZMBasUtlFilePath::KZMBasUtlFilePath() : m_url(false), m_remote(false) {}

KZMBasUtlFilePath::KZMBasUtlFilePath(cow_String directory, cow_String file) : KZMBasUtlFilePath() {
    SetFilePath(directory, file);
}

KZMBasUtlFilePath::KZMBasUtlFilePath(const KZMBasUtlFilePath& other) = default;

KZMBasUtlFilePath& KZMBasUtlFilePath::operator=(const KZMBasUtlFilePath& other) = default;

KZMBasUtlFilePath& KZMBasUtlFilePath::operator=(KZMBasUtlFilePath&& other) {
    return *this = static_cast<const KZMBasUtlFilePath&>(other);
}

KZMBasUtlFilePath::~KZMBasUtlFilePath() {}

void KZMBasUtlFilePath::SetFilePath(cow_String directory, cow_String file) {
    KZMBasUtlFilePath parsed;
    parsed.m_url = KZMBasUtlUrlParser::IsUrl(directory) || KZMBasUtlUrlParser::IsUrl(file);
    parsed.m_remote = IsPrefixRemoteFileAccessor(directory) || IsPrefixRemoteFileAccessor(file);
    if (parsed.Whole()) {
        parsed.KeepWhole(directory, file);
    } else {
        parsed.Split(directory, file);
    }
    *this = parsed;
}

void KZMBasUtlFilePath::KeepWhole(cow_String& directory, cow_String& file) {
    const bool fileStandsAlone =
        KZMBasUtlUrlParser::IsUrl(file) || IsPrefixRemoteFileAccessor(file);
    cow_String& location = fileStandsAlone ? file : directory;
    if (IsPrefixRemoteFileAccessor(location)) {
        TrimPrefixNetworkConnectors(location);
        location = Joined({kNetwork, location});
    }
    if (fileStandsAlone || file.Empty()) {
        m_baseName = location;
    } else {
        m_baseName = Joined({directory, EndsInSeparator(directory) ? "" : "/", file});
    }
}

void KZMBasUtlFilePath::Split(cow_String& directory, cow_String& file) {
    substitute(directory, "/", "\\");
    substitute(file, "/", "\\");
    const std::string_view path = file;
    if (!IsAbsolute(path)) m_baseDirectory = AbsoluteBase(directory);
    const std::size_t nameAt = path.rfind('\\') + 1;  // 0 if there is none
    const std::string_view name = path.substr(nameAt);
    const std::size_t dot = name == "." ? name.npos : name.rfind('.');
    const std::size_t baseLength = dot == name.npos ? name.size() : dot;
    m_directory = Piece(file, 0, nameAt);
    m_baseName = Piece(file, nameAt, baseLength);
    m_extension = Piece(file, nameAt + baseLength, name.size() - baseLength);
}

KZMBasUtlFilePath& KZMBasUtlFilePath::ReplaceSeparators(const char* from, const char* to) {
    if (Whole()) return *this;
    KZMBasUtlFilePath turned(*this);
    for (cow_String* text : {&turned.m_baseDirectory, &turned.m_directory, &turned.m_baseName})
        substitute(*text, from, to);
    return *this = turned;
}

KZMBasUtlFilePath& KZMBasUtlFilePath::Native() { return ReplaceSeparators("/", "\\"); }

KZMBasUtlFilePath& KZMBasUtlFilePath::Portable() { return ReplaceSeparators("\\", "/"); }

cow_String KZMBasUtlFilePath::PathName() const {
    return Whole() ? m_baseName : Joined({m_directory, m_baseName, m_extension});
}

cow_String KZMBasUtlFilePath::FileName() const {
    return m_extension.Empty() ? m_baseName : Joined({m_baseName, m_extension});
}

cow_String KZMBasUtlFilePath::BaseName() const { return m_baseName; }

cow_String KZMBasUtlFilePath::Extension() const { return m_extension; }

cow_String KZMBasUtlFilePath::Directory() const { return m_directory; }

cow_String KZMBasUtlFilePath::AbsoluteDirectoryPath() const {
    if (Whole()) return m_baseName;
    return m_directory.Empty() ? m_baseDirectory : Joined({JoiningBase(), m_directory});
}

cow_String KZMBasUtlFilePath::AbsolutePathName() const {
    return Whole() ? m_baseName : Joined({JoiningBase(), m_directory, m_baseName, m_extension});
}

// The base directory without what would double the separator that the directory begins with.
std::string_view KZMBasUtlFilePath::JoiningBase() const {
    std::string_view base = m_baseDirectory;
    if (m_directory[0] == '\\')
        while (base.ends_with('\\')) base.remove_suffix(1);
    return base;
}

bool KZMBasUtlFilePath::Ask(platform::PathQuestion question) const {
    return !Whole() && AskSystem(question, AbsolutePathName());
}

bool KZMBasUtlFilePath::Exists() const { return Ask(platform::PathQuestion::kExists); }

bool KZMBasUtlFilePath::IsDir() const { return Ask(platform::PathQuestion::kIsDirectory); }

bool KZMBasUtlFilePath::IsReadable() const { return Ask(platform::PathQuestion::kIsReadable); }

bool KZMBasUtlFilePath::IsWriteable() const { return Ask(platform::PathQuestion::kIsWriteable); }

bool KZMBasUtlFilePath::IsExecutable() const { return Ask(platform::PathQuestion::kIsExecutable); }

bool KZMBasUtlFilePath::IsPrefixRemoteFileAccessor(const cow_String& path) {
    return NetworkPrefixOf(path) != NetworkPrefix::kNone;
}

// Only ever the name of the folder is taken off, also where a prefix with a separator matched.
void KZMBasUtlFilePath::TrimPrefixNetworkConnectors(cow_String& path) {
    const auto trim = [&path](std::string_view prefix) {
        if (std::string_view(path).starts_with(prefix))
            path.Erase(0, static_cast<int>(prefix.size()));
    };
    switch (NetworkPrefixOf(path)) {
        case NetworkPrefix::kNone:
            break;
        case NetworkPrefix::kTranslated:
            trim(AsUserSees(kNetwork));
            break;
        case NetworkPrefix::kPlain:
            trim(kNetwork);
            break;
    }
}
