// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <alloc/KZMBasMemPoolCow.h>
#include <runtime/KZMBasCowTrackingAllocator.h>
#include <runtime/KZMBasSrmAllocator.h>
#include <runtime/KZMBasSrmDCAllocator.h>
#include <runtime/KZMBasSrmMemoryInfo.h>
#include <runtime/KZMBas_SingletonRegistry.h>
#include <runtime/mem_AllocationOperators.h>
#include <runtime/srm_ResourceConstData.h>

#include <cstddef>
#include <type_traits>

struct kzm_Layout {
    using Registry = KZMBas_SingletonRegistry;
    static_assert(offsetof(Registry, m_negative) == sizeof(void*));
    static_assert(offsetof(Registry, m_nonNegative) == 2 * sizeof(void*));
    static_assert(offsetof(Registry, m_condition) == 3 * sizeof(void*));
    static_assert(sizeof(Registry) == 4 * sizeof(void*));
    static_assert(sizeof(SingletonDestructCondition) == 3);

    static_assert(std::is_empty_v<KZMBasSrmAllocator<0>>);
    static_assert(std::is_empty_v<KZMBasSrmBase>);
    static_assert(std::is_empty_v<mem_AllocationOperators>);
    static_assert(std::is_empty_v<mem_AllocationOperatorsTiny>);
    static_assert(sizeof(KZMBasSrmMemoryInfo) == sizeof(void*));
    static_assert(sizeof(KZMBasCowTrackingAllocator) == sizeof(void*));
    static_assert(sizeof(KZMBasMemPoolCow) == 1064);  // copied as bytes
    static_assert(std::is_standard_layout_v<KZMBasMemPoolCow>);
    static_assert(sizeof(srm_ResourceEnums) == 4);

    using Entry = KZMBasSrmDCAllocEntry;
    static_assert(offsetof(Entry, m_length) == 0);
    static_assert(offsetof(Entry, m_size) == 4);
    static_assert(offsetof(Entry, m_name) == 8);
    static_assert(offsetof(Entry, m_registered) == 8 + 2 * sizeof(void*));
    static_assert(offsetof(Entry, m_data) == 8 + 3 * sizeof(void*));
    static_assert(sizeof(Entry) == 8 + 4 * sizeof(void*));

    using Arrays = KZMBasSrmDCAllocator;
    static_assert(offsetof(Arrays, m_nextIndex) == sizeof(void*));
    static_assert(offsetof(Arrays, m_registeredBytes) == sizeof(void*) + 4);
    static_assert(offsetof(Arrays, m_freedVariableBytes) == sizeof(void*) + 8);
    static_assert(offsetof(Arrays, m_tempBytesAllocated) == sizeof(void*) + 12);
    static_assert(offsetof(Arrays, m_tempBytesFreed) == sizeof(void*) + 16);
    static_assert(offsetof(Arrays, m_variables) == (sizeof(void*) == 4 ? 24 : 32));
    static_assert(offsetof(Arrays, m_temporaries) == (sizeof(void*) == 4 ? 32 : 48));
    static_assert(sizeof(Arrays) == (sizeof(void*) == 4 ? 44 : 72));

    using Tables = srm_ResourceConstData;
    static_assert(offsetof(Tables, m_phaseNames) == std::size_t{65} * 1024);
    static_assert(offsetof(Tables, m_procedureNames) == std::size_t{87} * 1024);
    static_assert(offsetof(Tables, m_localPurgeId) == std::size_t{93} * 1024);
    static_assert(offsetof(Tables, m_resourceOfPurgeId) == 95492);
    static_assert(offsetof(Tables, m_purgeIdBase) == 95672);
    static_assert(offsetof(Tables, m_reserved) == 95676);
    static_assert(offsetof(Tables, m_resourceData) == 95680);
    static_assert(offsetof(Tables, m_purgeables) == 95940);
    static_assert(sizeof(Tables) == 120228);
};
