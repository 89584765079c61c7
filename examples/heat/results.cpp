#include "results.h"

#include <cstdio>

#include "picture.h"
#include "vtu.h"

namespace heat {
namespace {

constexpr char kWhole[] = "temperature.vtu";
constexpr char kIndex[] = "temperature.pvtu";
constexpr char kPicture[] = "temperature.png";

}  // namespace

Results::Results(const cow_String& folder, Ranks& ranks) : m_name(folder), m_ranks(ranks) {
    ranks.Together([&] {
        if (ranks.IsFirst()) m_folder = std::make_unique<OutputFolder>(folder);
    });
}

// A folder that the first rank made can go when the others' files have gone.
Results::~Results() {
    if (!m_ranks.IsFirst()) m_folder.reset();
    m_ranks.AwaitOthersInOrder();
}

void Results::Write(const Domain& domain, const std::vector<double>& temperatureOfRow,
                    const Figures& figures) {
    const Skin skin = JoinSkins(domain, temperatureOfRow, m_ranks);
    const bool isFirst = m_ranks.IsFirst(), isWhole = m_ranks.Count() == 1;
    m_ranks.Together([&] {
        if (!isFirst) return;
        const std::string picture = PictureOf(skin, domain.ends.axis, figures);
        AddPiece(domain, temperatureOfRow, figures.solution);
        m_folder->Add(kPicture, picture);
        if (!isWhole) m_folder->Add(kIndex, PvtuOf(m_ranks));
    });
    m_ranks.Together([&] {
        if (isFirst) return;
        m_folder = std::make_unique<OutputFolder>(m_name);
        AddPiece(domain, temperatureOfRow, figures.solution);
    });
    // An index never joins pieces of two jobs.
    m_ranks.Together([&] {
        if (isFirst && !isWhole) m_folder->Remove(kIndex);
    });
    m_ranks.Together([&] {
        if (!isFirst) m_folder->Commit();
    });
    m_ranks.Together([&] {
        if (isFirst) m_folder->Commit();
    });
    m_folder->Keep();
}

void Results::AddPiece(const Domain& domain, const std::vector<double>& temperatureOfRow,
                       const Solution& solution) {
    const std::string name = m_ranks.Count() == 1 ? kWhole : PieceName(m_ranks.Own());
    m_folder->Add(name.c_str(), VtuOf(domain, temperatureOfRow, solution.isConverged, m_ranks));
}

void Results::PrintNames() const {
    std::printf("results\n  %s\n  %s\n",
                m_folder->Path(m_ranks.Count() == 1 ? kWhole : kIndex).CStr(),
                m_folder->Path(kPicture).CStr());
}

}  // namespace heat
