#pragma once
#include <omi/omi_BlkBitVect.h>
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
using NodeSet = omi_BlkBitVect;                                      // of node labels

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

}  // namespace heat
