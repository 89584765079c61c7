#include "distribute.h"

#include <metis.h>
#include <omi/omi_SparseSet.h>

#include <algorithm>
#include <new>
#include <utility>

#include "heat_error.h"

namespace heat {
namespace {

std::size_t At(int i) { return static_cast<std::size_t>(i); }

// The rank of each row.
std::vector<idx_t> RanksOfRows(const Mesh& mesh, int count) {
    auto elements = static_cast<idx_t>(mesh.elements.size());
    auto nodes = static_cast<idx_t>(mesh.Nodes());
    std::vector<idx_t> starts(mesh.elements.size() + 1), corners;
    corners.reserve(4 * mesh.elements.size());
    for (std::size_t i = 0; i < mesh.elements.size(); ++i) {
        corners.insert(corners.end(), mesh.elements[i].begin(), mesh.elements[i].end());
        starts[i + 1] = static_cast<idx_t>(corners.size());
    }
    idx_t parts = count, cut = 0;
    std::vector<idx_t> ofElements(mesh.elements.size()), ofNodes(mesh.Nodes());
    const int result =
        METIS_PartMeshNodal(&elements, &nodes, starts.data(), corners.data(), nullptr, nullptr,
                            &parts, nullptr, nullptr, &cut, ofElements.data(), ofNodes.data());
    if (result != METIS_OK) throw std::bad_alloc();  // nothing else is wrong with such a mesh
    return ofNodes;
}

// Rows and elements of each rank, in the order of the whole; an element may have several ranks.
struct Plan {
    std::vector<idx_t> rankOf;
    std::vector<std::vector<int>> rows;
    std::vector<std::vector<int>> elements;
};

Plan PlanFor(const Domain& whole, int count) {
    Plan plan{RanksOfRows(whole.mesh, count), {}, {}};
    plan.rows.resize(At(count));
    plan.elements.resize(At(count));
    for (std::size_t row = 0; row < plan.rankOf.size(); ++row) {
        plan.rows[At(plan.rankOf[row])].push_back(static_cast<int>(row));
    }
    for (const std::vector<int>& rows : plan.rows) {
        if (!rows.empty()) continue;
        throw HeatError(Text("the mesh of '", whole.name, "' is too coarse for ", count, " ranks"));
    }
    for (std::size_t element = 0; element < whole.mesh.elements.size(); ++element) {
        for (const int corner : whole.mesh.elements[element]) {
            std::vector<int>& ofRank = plan.elements[At(plan.rankOf[At(corner)])];
            if (ofRank.empty() || ofRank.back() != static_cast<int>(element)) {
                ofRank.push_back(static_cast<int>(element));
            }
        }
    }
    return plan;
}

struct Share {
    Part part;
    NodeSets sets;
};

Share ShareOf(const Domain& whole, const Plan& plan, int rank) {
    Share share;
    Part& part = share.part;
    const Mesh& mesh = whole.mesh;
    std::vector<std::pair<int, int>> halo;  // rank and label
    for (const int element : plan.elements[At(rank)]) {
        for (const int row : mesh.elements[At(element)]) {
            part.corners.push_back(mesh.LabelOf(row));
            const int other = plan.rankOf[At(row)];
            if (other != rank) halo.emplace_back(other, mesh.LabelOf(row));
        }
    }
    std::sort(halo.begin(), halo.end());
    halo.erase(std::unique(halo.begin(), halo.end()), halo.end());
    for (const int row : plan.rows[At(rank)]) part.labels.push_back(mesh.LabelOf(row));
    for (const auto& [other, label] : halo) {
        part.labels.push_back(label);
        part.haloRanks.push_back(other);
    }
    for (const int label : part.labels) {
        const Point point = mesh.PointAt(At(whole.tables.rows.ConstGet(label)));
        part.coordinates.insert(part.coordinates.end(), point.begin(), point.end());
    }
    for (const char* const name : {kHotEnd, kColdEnd}) {
        const cow_List<int>& all = whole.ends.sets.ConstGet(name);
        omi_SparseSet nodes(all.begin(), all.end());
        nodes &= omi_SparseSet(part.labels.begin(), part.labels.end());
        share.sets.Insert(name, cow_List<int>(nodes.begin(), nodes.end()));
    }
    return share;
}

void Send(const Share& share, const Ranks& ranks, int to) {
    ranks.Send(share.part.labels, to);
    ranks.Send(share.part.coordinates, to);
    ranks.Send(share.part.corners, to);
    ranks.Send(share.part.haloRanks, to);
    for (const char* const name : {kHotEnd, kColdEnd}) {
        const cow_List<int>& labels = share.sets.ConstGet(name);
        ranks.Send(std::vector<int>(labels.begin(), labels.end()), to);
    }
}

Share Receive(const Ranks& ranks, int from) {
    Share share;
    share.part.labels = ranks.ReceiveInts(from);
    share.part.coordinates = ranks.ReceiveDoubles(from);
    share.part.corners = ranks.ReceiveInts(from);
    share.part.haloRanks = ranks.ReceiveInts(from);
    for (const char* const name : {kHotEnd, kColdEnd}) {
        const std::vector<int> labels = ranks.ReceiveInts(from);
        share.sets.Insert(name, cow_List<int>(labels.begin(), labels.end()));
    }
    return share;
}

}  // namespace

std::unique_ptr<Domain> Distribute(std::unique_ptr<Domain> whole, Ranks& ranks) {
    Share share;
    auto domain = std::make_unique<Domain>();
    if (ranks.IsFirst()) {
        Plan plan;
        ranks.Together([&] { plan = PlanFor(*whole, ranks.Count()); });
        for (int rank = 1; rank < ranks.Count(); ++rank) {
            Send(ShareOf(*whole, plan, rank), ranks, rank);
        }
        share = ShareOf(*whole, plan, 0);
        domain->name = whole->name;
        domain->tables.clock = whole->tables.clock;
        domain->ends.axis = whole->ends.axis;
        whole.reset();
    } else {
        ranks.Together([] {});
        share = Receive(ranks, 0);
    }
    ranks.Together([&] {
        domain->mesh = BuildMesh(share.part, domain->tables);
        domain->ends.sets = share.sets;
    });
    return domain;
}

}  // namespace heat
