#include "output_folder.h"

#include <errors/KZMBasUtlSystemError.h>
#include <files/KZMBasUtlDirPathUtils.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "files.h"

namespace heat {
namespace fs = std::filesystem;

OutputFolder::OutputFolder(const cow_String& folder) : m_folder(HostForm(folder)) {
    OnFile("cannot write into the folder", folder, [&] {
        try {
            MakeFolders();
            const cow_String probe = Path(Text(".heat.", getpid()).CStr());
            m_files.push_back({probe, probe});
            WriteFile(probe, "");
            RemoveEverything();
        } catch (...) {
            RemoveEverything();
            throw;
        }
    });
}

OutputFolder::~OutputFolder() { RemoveEverything(); }

void OutputFolder::Add(const char* fileName, const std::string& contents) {
    OnFile("cannot write", Path(fileName), [&] {
        MakeFolders();
        const cow_String hidden = Text(".", fileName, ".", getpid());
        m_files.push_back({Path(hidden.CStr()), Path(fileName)});
        WriteFile(m_files.back().temporary, contents);
    });
}

void OutputFolder::Commit() {
    for (const File& file : m_files) {
        OnFile("cannot write", file.final, [&] {
            std::error_code error;
            if (fs::is_directory(file.final.CStr(), error)) {
                KZMBasUtlSystemError("rename", KZMBasSystemError(EISDIR))
                    .Throw("output_folder.cpp", __LINE__);
            }
        });
    }
    for (File& file : m_files) {
        OnFile("cannot write", file.final, [&] { RenameFile(file.temporary, file.final); });
        file.isInPlace = true;
    }
}

void OutputFolder::Keep() {
    m_files.clear();
    m_madeFolders.clear();
}

void OutputFolder::Remove(const char* fileName) const {
    const cow_String path = Path(fileName);
    OnFile("cannot replace", path, [&] {
        if (unlink(path.CStr()) != 0 && errno != ENOENT) {
            KZMBasUtlSystemError("unlink", KZMBasSystemError::Last())
                .Throw("output_folder.cpp", __LINE__);
        }
    });
}

cow_String OutputFolder::Path(const char* fileName) const {
    return KZMBasUtlDirPathUtils::NativeName(
        KZMBasUtlFilePath(m_folder, fileName).AbsolutePathName());
}

void OutputFolder::MakeFolders() {
    std::error_code error;
    std::vector<std::string> missing;  // innermost first
    for (fs::path each = fs::path(Path("x").CStr()).parent_path();
         each.has_relative_path() && !fs::exists(each, error); each = each.parent_path()) {
        missing.push_back(each.string());
    }
    for (auto folder = missing.rbegin(); folder != missing.rend(); ++folder) {
        if (fs::exists(*folder, error)) continue;  // a "." or ".." whose folder was made just now
        MakeFolder(folder->c_str());
        m_madeFolders.push_back(*folder);
    }
}

void OutputFolder::RemoveEverything() {
    std::error_code error;
    for (const File& file : m_files) {
        fs::remove((file.isInPlace ? file.final : file.temporary).CStr(), error);
    }
    for (auto each = m_madeFolders.rbegin(); each != m_madeFolders.rend(); ++each) {
        fs::remove(*each, error);
    }
    m_files.clear();
    m_madeFolders.clear();
}

}  // namespace heat
