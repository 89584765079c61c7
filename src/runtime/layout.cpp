// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <alloc/KZMBasMemPoolCow.h>
#include <runtime/KZMBasCowTrackingAllocator.h>
#include <runtime/KZMBasSrmAllocator.h>
#include <runtime/KZMBasSrmMemoryInfo.h>
#include <runtime/KZMBas_SingletonRegistry.h>
#include <runtime/mem_AllocationOperators.h>

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
};
