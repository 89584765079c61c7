#pragma once
#include <coreutils/KZMString.h>
#include <generics/KZMBasTree.h>
#include <runtime/KZMBasDCAllocator.h>

#include <cstdint>

// One named variable of a KZMBasSrmDCAllocator. A copy shares the name and names the same block.
class KZM_API KZMBasSrmDCAllocEntry {
public:
    KZMBasSrmDCAllocEntry();  // what a number without a variable stands for: no block, no name
    // Takes the data as it is: the record does not own it.
    KZMBasSrmDCAllocEntry(std::uint32_t length, std::int32_t size, const char* name, void* data);

    // Elements times size, modulo 2^32.
    std::uint32_t Bytes() const { return m_length * static_cast<std::uint32_t>(m_size); }

    std::uint32_t m_length;  // elements
    std::int32_t m_size;     // bytes of one element
    KZMString m_name;        // "" for a number without a variable
    bool m_registered;       // made by registerVariable
    void* m_data;            // not owned
};

// Work arrays by name and number, and anonymous temporary blocks, from one underlying allocator;
// with a report of the arrays and running byte counts of both. Takes the place of a plain allocator
// where one is wanted: its blocks are temporary ones. docs/work-arrays.md has an example.
//
//     KZMBasSrmDCAllocator arrays(allocator);
//     int matrix = arrays.registerVariable(n, sizeof(double), "matrix");  // -1: no memory
//     auto* values = static_cast<double*>(arrays.getVariable(matrix));
//     arrays.freeVariable(matrix);
//
// Sizes and counts of bytes are 32-bit products and sums that wrap. Contents are as the underlying
// allocator gives them. Null from it is passed on (-1, null) and changes nothing; where memory for
// the records themselves runs out, the block goes back and std::bad_alloc leaves, changing nothing.
// One thread at a time, const functions included.
class KZM_API KZMBasSrmDCAllocator : public KZMBasDCAllocator {
public:
    // The underlying allocator must outlive this object.
    explicit KZMBasSrmDCAllocator(KZMBasAllocator& underlying);
    KZMBasSrmDCAllocator(const KZMBasSrmDCAllocator&) = delete;
    KZMBasSrmDCAllocator& operator=(const KZMBasSrmDCAllocator&) = delete;

    // Gives no block back: call freeAllVariables first, and free what is temporary.
    ~KZMBasSrmDCAllocator() override;

    // The new variable's number, or -1. Numbers count up from 0 and are never used again. Several
    // variables may have one name; null is the empty name.
    int registerVariable(unsigned length, int size, const char* name) override;

    // The lowest number under that name, or -1. O(number of variables).
    int findVariable(const char* name) const override;

    // The block, until it is freed. A number without a variable gives null, and is from then on
    // listed as an empty, nameless entry until it is freed.
    void* getVariable(int index) override;
    const void* constGetVariable(int index) const override;

    const char* getName(int index) const override;  // the variable must exist

    // Sets the caller's number to -1, also if there is no such variable; the underlying allocator
    // then gets a null block.
    void freeVariable(int& index) override;
    void freeAllVariables() override;

    // Null if there is no memory.
    void* allocTempData(int bytes) override;
    double* allocTempDouble(int count) override;
    int* allocTempInt(int count) override;

    // A block that is not known goes back to the underlying allocator all the same.
    void freeTempData(void* block) override;
    void freeTempData(int* block) override;
    void freeTempData(double* block) override;

    // Number, length, element size and name of each variable, by number.
    void dumpVariables(aio_ostream& os) const override;

    // As a general allocator: allocTempData and freeTempData(void*), also where a derived class
    // overrides them. `granted` is left alone.
    void* Alloc(unsigned size) override;
    void* Alloc(unsigned size, unsigned& granted) override;
    void Free(void* block) override;
    void* allocate(unsigned size, const void* hint) override;
    void deallocate(void* block, unsigned size) override;
    const KZMBasAllocator& LargeBlockAllocator(const KZMBasAllocator& proposed) const override;

    // Since construction; none of them ever shrinks.
    std::uint32_t registeredBytes() const { return m_registeredBytes; }
    std::uint32_t freedVariableBytes() const { return m_freedVariableBytes; }
    std::uint32_t tempBytesAllocated() const { return m_tempBytesAllocated; }
    std::uint32_t tempBytesFreed() const { return m_tempBytesFreed; }

private:
    friend struct kzm_Layout;

    std::int32_t m_nextIndex;
    std::uint32_t m_registeredBytes;
    std::uint32_t m_freedVariableBytes;
    std::uint32_t m_tempBytesAllocated;
    std::uint32_t m_tempBytesFreed;
    mutable KZMBasTree<int, KZMBasSrmDCAllocEntry> m_variables;
    KZMBasTree<void*, std::uint32_t> m_temporaries;  // bytes of each block
    KZMBasAllocator& m_underlying;
};
