#pragma once
#include <files/KZMBasUtlFilePath.h>

#include <string>
#include <vector>

namespace heat {

// The folder of the results. They are written under temporary names and appear all at once, by
// Commit, in the order of Add; without Keep nothing stays behind, neither files nor folders made on
// the way. Until the first Add there is nothing on the disk.
class OutputFolder {
public:
    // Throws HeatError where nothing can be written into the folder, or it can not be made, so that
    // this shows before the long work.
    explicit OutputFolder(const cow_String& folder);
    ~OutputFolder();
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;

    void Add(const char* fileName, const std::string& contents);
    void Commit();
    void Keep();
    void Remove(const char* fileName) const;      // an older result, if it is there
    cow_String Path(const char* fileName) const;  // absolute, as the system knows it

private:
    struct File {
        cow_String temporary;
        cow_String final;
        bool isInPlace = false;
    };

    void MakeFolders();
    void RemoveEverything();

    cow_String m_folder;                     // in host form
    std::vector<std::string> m_madeFolders;  // outermost first
    std::vector<File> m_files;
};

}  // namespace heat
