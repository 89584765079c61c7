#pragma once
#include <coreutils/KZMBasCamPool.h>
#include <runtime/KZMBasSrmForwarder.h>
#include <runtime/srm_ResourceConstData.h>

namespace heat {

// The application's memory resources: a pool of its own for each of the two tables, and the record
// that describes them. Installed between start and stop of the library; a finalizer in the
// singleton registry takes the pools out of service, after the tables are gone.
class MemoryManager : public KZMBasSrmForwarder {
public:
    static void Install();

    static const KZMBasCamPool& RowPool();
    static const KZMBasCamPool& TemperaturePool();
    static const srm_ResourceConstData& Description();

private:
    static KZMBasCamPool* PoolOf(srm_ResourceEnums resource);
    static void Remove();
};

// The library between the counted start and stop, with the memory manager installed.
class LibrarySession {
public:
    LibrarySession();
    ~LibrarySession();
    LibrarySession(const LibrarySession&) = delete;
    LibrarySession& operator=(const LibrarySession&) = delete;

private:
    int m_modules = 0;
};

}  // namespace heat
