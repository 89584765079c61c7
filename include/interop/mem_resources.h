#pragma once
#include <alloc/KZMBasAllocator.h>
#include <coreutils/KZMBasCamPool.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory_resource>
#include <new>

// Memory of the product for the containers of std::pmr, and the other way round:
//
//     mem_PolicyResource<KZMBasSrmAllocator<7>> pool7;        // std::pmr containers from pool 7
//     std::pmr::vector<double> values(&pool7);
//
//     std::pmr::unsynchronized_pool_resource blocks;          // tables of policy 7 from a resource
//     mem_ResourcePool pool(blocks);
//     KZMBasSrmAllocator<7>::SetPool(&pool);
//
// All of them refer to their source, which must live on as long as the blocks. Exhaustion, and a
// block of 4 gigabytes, which no source here can name, throw std::bad_alloc. They add no locks: as
// many threads may use them as may use the source.

// What the resources below share: alignment. A source aligns to two pointers; blocks for more are
// taken larger, with their true address before them.
class mem_SourceResource : public std::pmr::memory_resource {
protected:
    virtual void* Take(unsigned size) = 0;  // a block of the source, never null
    virtual void Give(void* block) = 0;     // takes it back

private:
    static constexpr std::size_t kAligned = 2 * sizeof(void*);

    void* TakeChecked(std::uint64_t size) {
        if (size > UINT_MAX) throw std::bad_alloc();
        return Take(static_cast<unsigned>(size));
    }

    // A source may align by size alone, so a size is a multiple of the alignment, and never 0.
    void* do_allocate(std::size_t bytes, std::size_t alignment) final {
        const std::uint64_t size = bytes == 0 ? 1 : bytes;
        if (size > UINT_MAX || alignment > UINT_MAX / 2) throw std::bad_alloc();
        if (alignment <= kAligned)
            return TakeChecked((size + alignment - 1) / alignment * alignment);
        void* const block = TakeChecked(size + alignment + sizeof(void*));
        const auto first = reinterpret_cast<std::uintptr_t>(block) + sizeof(void*);
        const std::uintptr_t aligned = (first + alignment - 1) / alignment * alignment;
        reinterpret_cast<void**>(aligned)[-1] = block;
        return reinterpret_cast<void*>(aligned);
    }

    void do_deallocate(void* p, std::size_t, std::size_t alignment) final {
        Give(alignment <= kAligned ? p : static_cast<void**>(p)[-1]);
    }
};

// Resource over an allocator policy, such as KZMBasSrmAllocator<7>. Has no state: two of one policy
// are equal. Blocks are zero-filled, which costs the time to write them.
template <class Policy>
class mem_PolicyResource final : public mem_SourceResource {
    void* Take(unsigned size) override { return Policy::allocate(size); }
    void Give(void* block) override { Policy::deallocate(block); }
    bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override {
        return dynamic_cast<const mem_PolicyResource*>(&other) != nullptr;
    }
};

// Resource over a pool, whose figures then count the containers' blocks.
class mem_PoolResource final : public mem_SourceResource {
public:
    // The pool is not owned.
    explicit mem_PoolResource(KZMBasCamPool& pool) : m_pool(&pool) {}

private:
    void* Take(unsigned size) override { return m_pool->Alloc(size); }
    void Give(void* block) override { m_pool->Free(block); }
    bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override {
        const auto* const same = dynamic_cast<const mem_PoolResource*>(&other);
        return same && same->m_pool == m_pool;
    }

    KZMBasCamPool* m_pool;
};

// Resource over an allocator that is handed around as an object, such as KZMBasSrmDCAllocator,
// whose temporary blocks the containers then take.
class mem_AllocatorResource final : public mem_SourceResource {
public:
    // The allocator is not owned.
    explicit mem_AllocatorResource(KZMBasAllocator& allocator) : m_allocator(&allocator) {}

private:
    void* Take(unsigned size) override {
        void* const block = m_allocator->Alloc(size);
        if (!block) throw std::bad_alloc();
        return block;
    }
    void Give(void* block) override { m_allocator->Free(block); }
    bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override {
        const auto* const same = dynamic_cast<const mem_AllocatorResource*>(&other);
        return same && same->m_allocator == m_allocator;
    }

    KZMBasAllocator* m_allocator;
};

// Pool that serves from a resource, to be set in an allocator policy: so tables take their memory
// from an arena. Each block carries 16 bytes for its size. Set it and take it away while no block
// of the policy is alive.
class mem_ResourcePool final : public KZMBasCamPool {
public:
    // The resource is not owned. The name is kept as a pointer: pass a literal.
    explicit mem_ResourcePool(std::pmr::memory_resource& resource, const char* name = "")
        : KZMBasCamPool(name), m_resource(&resource) {}

    // As the base class says; memory and exceptions are the resource's.
    void* Alloc(unsigned size) override {
        if (size > std::numeric_limits<std::size_t>::max() - kHead) throw std::bad_alloc();
        void* const block = m_resource->allocate(kHead + size, kHead);
        *static_cast<unsigned*>(block) = size;
        CountTaken(size);
        return static_cast<char*>(block) + kHead;
    }
    unsigned Free(void* block) override {
        if (!block) return 0;
        void* const head = static_cast<char*>(block) - kHead;
        const unsigned size = *static_cast<unsigned*>(head);
        m_resource->deallocate(head, kHead + size, kHead);
        CountGivenBack(size);
        return size;
    }

private:
    static constexpr std::size_t kHead = 16;

    std::pmr::memory_resource* m_resource;
};
