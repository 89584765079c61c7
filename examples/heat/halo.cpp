#include "halo.h"

#include <cow/cow_MapIterator.h>

namespace heat {

Halo::Halo(const Mesh& mesh, const Tables& tables, const System& system, const Ranks& ranks,
           WorkArrays& arrays)
    : m_ranks(ranks), m_own(system.load.size()) {
    for (const auto& [rank, labels] : cow_ConstMapSortedIt(tables.neighbours)) {
        const std::size_t before = m_sent.size();
        for (const int label : labels) {
            const int unknown = system.UnknownOf(tables.rows.ConstGet(label));
            if (unknown >= 0) m_sent.push_back(unknown);
        }
        m_outgoing.push_back({rank, nullptr, static_cast<int>(m_sent.size() - before)});
        m_incoming.push_back({rank, nullptr, 0});
    }
    m_values = arrays.New<double>("values for other ranks", m_sent.size());
    double* values = m_values;
    for (Ranks::Message& message : m_outgoing) {
        message.values = values;
        values += message.count;
    }
    auto from = m_incoming.begin();
    for (auto row = static_cast<int>(mesh.own); row < static_cast<int>(mesh.Nodes()); ++row) {
        if (system.UnknownOf(row) < 0) continue;
        while (from->rank != tables.halo.ConstGet(mesh.LabelOf(row))) ++from;
        ++from->count;
    }
}

void Halo::Update(WorkArrays::Vector& values) {
    for (std::size_t i = 0; i < m_sent.size(); ++i) m_values[i] = values[m_sent[i]];
    double* at = values.data() + m_own;
    for (Ranks::Message& message : m_incoming) {
        message.values = at;
        at += message.count;
    }
    m_ranks.Exchange(m_outgoing, m_incoming);
}

}  // namespace heat
