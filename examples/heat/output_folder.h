#pragma once
#include <cow/cow_String.h>

#include <string>
#include <vector>

namespace heat {

// The folder of the results. They are written under temporary names and appear all at once, by
// Commit; without it nothing stays behind, neither files nor folders made on the way.
class OutputFolder {
public:
    // Makes the folder where it is missing. Throws HeatError where nothing can be written into it,
    // so that this shows before the long work.
    explicit OutputFolder(const cow_String& folder);
    ~OutputFolder();
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;

    void Add(const char* fileName, const std::string& contents);
    void Commit();
    cow_String Path(const char* fileName) const;

private:
    struct File {
        std::string temporary;
        std::string final;
    };

    std::string m_folder;
    std::vector<std::string> m_madeFolders;  // outermost first
    std::vector<File> m_files;
    bool m_isCommitted = false;
};

}  // namespace heat
