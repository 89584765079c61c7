#pragma once
#include <memory>

#include "output_folder.h"
#include "report.h"

namespace heat {

// The files that the job leaves: the picture, and the temperatures in one file or in a piece for
// each rank and an index that joins them.
class Results {
public:
    // Throws HeatError, on all ranks together, where nothing can be written into the folder.
    Results(const cow_String& folder, Ranks& ranks);
    ~Results();
    Results(const Results&) = delete;
    Results& operator=(const Results&) = delete;

    // On all ranks together. The files appear when all ranks have written theirs, the index last.
    void Write(const Domain& domain, const std::vector<double>& temperatureOfRow,
               const Figures& figures);
    void PrintNames() const;

private:
    void AddPiece(const Domain& domain, const std::vector<double>& temperatureOfRow,
                  const Solution& solution);

    const cow_String m_name;
    Ranks& m_ranks;
    std::unique_ptr<OutputFolder> m_folder;  // of other ranks: when the first has made it
};

}  // namespace heat
