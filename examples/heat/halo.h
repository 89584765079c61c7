#pragma once
#include "conduction.h"
#include "ranks.h"

namespace heat {

// Brings the values of the halo's unknowns from the ranks that they belong to. Both sides list them
// by ascending label, so the messages hold values only.
class Halo {
public:
    // All but the ranks is asked during construction only; the arrays must outlive it.
    Halo(const Mesh& mesh, const Tables& tables, const System& system, const Ranks& ranks,
         WorkArrays& arrays);

    // In a vector of all unknowns, own ones first. On all ranks together.
    void Update(WorkArrays::Vector& values);

    int Neighbours() const { return static_cast<int>(m_outgoing.size()); }
    std::size_t BytesSent() const { return m_sent.size() * sizeof(double); }  // by an update

private:
    const Ranks& m_ranks;
    std::vector<int> m_sent;  // unknowns
    double* m_values;         // of them
    std::vector<Ranks::Message> m_outgoing;
    std::vector<Ranks::Message> m_incoming;  // values to be set, one message after the other
    Eigen::Index m_own;                      // unknowns before those
};

}  // namespace heat
