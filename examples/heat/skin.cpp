#include "skin.h"

#include <algorithm>

namespace heat {
namespace {

// Numbers the nodes of the skin as they come.
class SkinBuilder {
public:
    int PlaceOf(int label, const Point& point, double temperature) {
        int place = static_cast<int>(m_skin.Nodes());
        if (m_places.ConstGetValue(label, place)) return place;
        m_places.Insert(label, place);
        m_skin.labels.push_back(label);
        m_skin.coordinates.insert(m_skin.coordinates.end(), point.begin(), point.end());
        m_skin.temperatures.push_back(temperature);
        return place;
    }

    void AddOwn(const Domain& domain, const std::vector<double>& temperatureOfRow, int own) {
        for (const std::array<int, 3>& rows : domain.mesh.surface) {
            if (domain.LowestRank(rows, own) < own) continue;
            std::array<int, 3>& triangle = m_skin.triangles.emplace_back();
            std::transform(rows.begin(), rows.end(), triangle.begin(), [&](int row) {
                const auto i = static_cast<std::size_t>(row);
                return PlaceOf(domain.mesh.labels[i], domain.mesh.PointAt(i), temperatureOfRow[i]);
            });
            m_skin.ranks.push_back(own);
        }
    }

    void Add(const Skin& theirs, int rank) {
        for (const std::array<int, 3>& places : theirs.triangles) {
            std::array<int, 3>& triangle = m_skin.triangles.emplace_back();
            std::transform(places.begin(), places.end(), triangle.begin(), [&](int place) {
                const auto i = static_cast<std::size_t>(place);
                return PlaceOf(theirs.labels[i], theirs.PointAt(i), theirs.temperatures[i]);
            });
            m_skin.ranks.push_back(rank);
        }
    }

    Skin& Result() { return m_skin; }

private:
    Skin m_skin;
    omi_IntTable<int, KZMBasOmiDefaultAllocator> m_places;  // node label -> place
};

void Send(const Skin& skin, const Ranks& ranks, int to) {
    ranks.Send(skin.labels, to);
    ranks.Send(skin.coordinates, to);
    ranks.Send(skin.temperatures, to);
    std::vector<int> places;
    for (const auto& each : skin.triangles) places.insert(places.end(), each.begin(), each.end());
    ranks.Send(places, to);
}

Skin Receive(const Ranks& ranks, int from) {
    Skin skin;
    skin.labels = ranks.ReceiveInts(from);
    skin.coordinates = ranks.ReceiveDoubles(from);
    skin.temperatures = ranks.ReceiveDoubles(from);
    const std::vector<int> places = ranks.ReceiveInts(from);
    for (std::size_t i = 0; i < places.size(); i += 3) {
        skin.triangles.push_back({places[i], places[i + 1], places[i + 2]});
    }
    return skin;
}

}  // namespace

Skin JoinSkins(const Domain& domain, const std::vector<double>& temperatureOfRow,
               const Ranks& ranks) {
    SkinBuilder builder;
    builder.AddOwn(domain, temperatureOfRow, ranks.Own());
    if (!ranks.IsFirst()) Send(builder.Result(), ranks, 0);
    for (int rank = 1; ranks.IsFirst() && rank < ranks.Count(); ++rank) {
        builder.Add(Receive(ranks, rank), rank);
    }
    return std::move(builder.Result());
}

}  // namespace heat
