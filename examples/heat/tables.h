#pragma once
#include <cow/cow_Btree.h>
#include <cow/cow_Map.h>
#include <omi/omi_BlkBitVect.h>
#include <omi/omi_IntMultiMap.h>
#include <omi/omi_IntTable.h>
#include <runtime/KZMBasSrmAllocator.h>

#include <chrono>

namespace heat {

// The resources whose pools serve the two tables.
inline constexpr int kRowResource = 21;
inline constexpr int kTemperatureResource = 22;

using RowTable = omi_IntTable<int, KZMBasSrmAllocator<kRowResource>>;  // node label -> matrix row
using TemperatureTable =
    omi_IntTable<double, KZMBasSrmAllocator<kTemperatureResource>>;  // node label -> degrees
using Adjacency = omi_IntMultiMap<int, KZMBasOmiDefaultAllocator>;   // node label -> elements
using LabelBits = omi_BlkBitVect;                                    // of node labels
using HaloTable = omi_IntTable<int, KZMBasOmiDefaultAllocator>;      // node label -> its rank

// What is passed on and kept: values, whose copies share everything until one is written.
using NodeSets = cow_Map<cow_String, cow_List<int>>;  // name -> node labels, ascending
using BoundaryValues = cow_Btree<int, double>;        // node label -> degrees it is held at
using Neighbours = cow_Map<int, cow_List<int>>;       // rank -> node labels, ascending

// Adds up the time of passes that consist of table operations only.
class TableClock {
public:
    template <class Pass>
    void Time(const Pass& pass) {
        const auto start = std::chrono::steady_clock::now();
        pass();
        m_seconds +=
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    double Seconds() const { return m_seconds; }

private:
    double m_seconds = 0;
};

// The job's tables, which its steps fill and read one after the other.
struct Tables {
    RowTable rows;
    Adjacency elementsAt;  // of each node in use, ascending
    TemperatureTable temperatures;
    HaloTable halo;         // of the nodes that belong to other ranks
    Neighbours neighbours;  // which of this rank's nodes are in the halo of others
    TableClock clock;
};

}  // namespace heat
