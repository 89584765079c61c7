#include "output_folder.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "heat_error.h"

namespace heat {
namespace fs = std::filesystem;

OutputFolder::OutputFolder(const cow_String& folder) : m_folder(folder.CStr()) {
    std::error_code error;
    for (fs::path each = fs::path(m_folder).lexically_normal();
         !each.empty() && !fs::exists(each, error); each = each.parent_path()) {
        if (each.has_filename()) m_madeFolders.insert(m_madeFolders.begin(), each.string());
        if (each == each.parent_path()) break;
    }
    fs::create_directories(m_folder, error);
    try {
        Add("heat-probe", "");
    } catch (const HeatError&) {
        for (auto each = m_madeFolders.rbegin(); each != m_madeFolders.rend(); ++each) {
            fs::remove(*each, error);
        }
        throw HeatError(Text("cannot write into the folder '", folder, "'"));
    }
    fs::remove(m_files.back().temporary, error);
    m_files.clear();
}

OutputFolder::~OutputFolder() {
    if (m_isCommitted) return;
    std::error_code error;
    for (const File& file : m_files) fs::remove(file.temporary, error);
    for (auto each = m_madeFolders.rbegin(); each != m_madeFolders.rend(); ++each) {
        fs::remove(*each, error);
    }
}

void OutputFolder::Add(const char* fileName, const std::string& contents) {
    const fs::path folder(m_folder);
    std::string hidden(".");
    hidden.append(fileName).append(".").append(std::to_string(getpid()));
    const std::string temporary = (folder / hidden).string();
    m_files.push_back({temporary, (folder / fileName).string()});
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    file.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    file.close();
    if (!file) throw HeatError(Text("cannot write '", Path(fileName), "'"));
}

void OutputFolder::Commit() {
    std::error_code error;
    for (const File& file : m_files) {
        if (fs::is_directory(file.final, error)) {
            throw HeatError(Text("'", file.final.c_str(), "' is a folder"));
        }
    }
    for (std::size_t i = 0; i < m_files.size(); ++i) {
        fs::rename(m_files[i].temporary, m_files[i].final, error);
        if (!error) continue;
        const cow_String failed(m_files[i].final.c_str());
        while (i-- > 0) fs::remove(m_files[i].final, error);
        throw HeatError(Text("cannot write '", failed, "'"));
    }
    m_isCommitted = true;
}

cow_String OutputFolder::Path(const char* fileName) const {
    return (fs::path(m_folder) / fileName).c_str();
}

}  // namespace heat
