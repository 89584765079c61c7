#include <coreutils/aio_ostream.h>
#include <runtime/KZMBasSrmDCAllocator.h>

#include <cassert>
#include <utility>

namespace {

// A fresh block that goes back if recording it fails.
class FreshBlock {
public:
    FreshBlock(KZMBasAllocator& source, std::uint32_t bytes)
        : m_source(source), m_block(source.Alloc(bytes)) {}
    FreshBlock(const FreshBlock&) = delete;
    FreshBlock& operator=(const FreshBlock&) = delete;
    ~FreshBlock() {
        if (m_block) m_source.Free(m_block);
    }
    void* Get() const { return m_block; }
    void* Keep() { return std::exchange(m_block, nullptr); }

private:
    KZMBasAllocator& m_source;
    void* m_block;
};

void PrintLine(aio_ostream& os, const char* index, const char* length, const char* size,
               const char* name) {
    aio_setwidth(os, 10).print(index);
    aio_setwidth(os, 10).print(length);
    aio_setwidth(os, 10).print(size);
    aio_setwidth(os, 50).print(name);
    os.put('\n').flush();
}

}  // namespace

KZMBasSrmDCAllocEntry::KZMBasSrmDCAllocEntry()
    : m_length(0), m_size(0), m_registered(false), m_data(nullptr) {}

KZMBasSrmDCAllocEntry::KZMBasSrmDCAllocEntry(std::uint32_t length, std::int32_t size,
                                             const char* name, void* data)
    : m_length(length), m_size(size), m_name(name), m_registered(true), m_data(data) {}

KZMBasSrmDCAllocator::KZMBasSrmDCAllocator(KZMBasAllocator& underlying)
    : m_nextIndex(0),
      m_registeredBytes(0),
      m_freedVariableBytes(0),
      m_tempBytesAllocated(0),
      m_tempBytesFreed(0),
      m_underlying(underlying) {}

KZMBasSrmDCAllocator::~KZMBasSrmDCAllocator() = default;

int KZMBasSrmDCAllocator::registerVariable(unsigned length, int size, const char* name) {
    FreshBlock block(m_underlying, length * static_cast<std::uint32_t>(size));
    if (!block.Get()) return -1;
    const KZMBasSrmDCAllocEntry entry(length, size, name, block.Get());
    m_variables.Set(m_nextIndex, entry);
    block.Keep();
    m_registeredBytes += entry.Bytes();
    const int index = m_nextIndex;
    m_nextIndex = static_cast<std::int32_t>(static_cast<std::uint32_t>(index) + 1);
    return index;
}

int KZMBasSrmDCAllocator::findVariable(const char* name) const {
    for (auto it = m_variables.First(); it; it = it.Next())
        if (it.Value().m_name.Compare(name) == 0) return it.Key();
    return -1;
}

void* KZMBasSrmDCAllocator::getVariable(int index) { return m_variables[index].m_data; }

const void* KZMBasSrmDCAllocator::constGetVariable(int index) const {
    return m_variables[index].m_data;
}

const char* KZMBasSrmDCAllocator::getName(int index) const {
    const auto it = m_variables.Find(index);
    assert(it && "getName: no such variable");
    return it ? it.Value().m_name.CStr() : "";
}

void KZMBasSrmDCAllocator::freeVariable(int& index) {
    const int key = std::exchange(index, -1);  // the caller's number may lie in the block
    const auto it = m_variables.Find(key);
    m_underlying.Free(it ? it.Value().m_data : nullptr);
    if (!it) return;
    m_freedVariableBytes += it.Value().Bytes();
    m_variables.Remove(it);
}

void KZMBasSrmDCAllocator::freeAllVariables() {
    for (auto it = m_variables.First(); it; it = it.Next()) {
        m_underlying.Free(it.Value().m_data);
        m_freedVariableBytes += it.Value().Bytes();
    }
    m_variables.Clear();
}

void* KZMBasSrmDCAllocator::allocTempData(int bytes) {
    const auto size = static_cast<std::uint32_t>(bytes);
    FreshBlock block(m_underlying, size);
    if (!block.Get()) return nullptr;
    m_temporaries.Set(block.Get(), size);
    m_tempBytesAllocated += size;
    return block.Keep();
}

double* KZMBasSrmDCAllocator::allocTempDouble(int count) {
    const std::uint32_t bytes = static_cast<std::uint32_t>(count) * 8u;
    return static_cast<double*>(allocTempData(static_cast<int>(bytes)));
}

int* KZMBasSrmDCAllocator::allocTempInt(int count) {
    const std::uint32_t bytes = static_cast<std::uint32_t>(count) * 4u;
    return static_cast<int*>(allocTempData(static_cast<int>(bytes)));
}

void KZMBasSrmDCAllocator::freeTempData(void* block) {
    if (const auto it = m_temporaries.Find(block)) {
        m_tempBytesFreed += it.Value();
        m_temporaries.Remove(it);
    }
    m_underlying.Free(block);
}

void KZMBasSrmDCAllocator::freeTempData(int* block) { freeTempData(static_cast<void*>(block)); }
void KZMBasSrmDCAllocator::freeTempData(double* block) { freeTempData(static_cast<void*>(block)); }

void KZMBasSrmDCAllocator::dumpVariables(aio_ostream& os) const {
    os.print("REGISTERED MEMORY REPORT\n");
    os.print("------------------------\n");
    PrintLine(os, "Index", "Length", "Size", "Name");
    PrintLine(os, "-----", "------", "----", "----");
    for (auto it = m_variables.First(); it; it = it.Next()) {
        const KZMBasSrmDCAllocEntry& entry = it.Value();
        aio_setwidth(os, 10).print_int(it.Key());
        aio_setwidth(os, 10).print_u_int64(entry.m_length);
        aio_setwidth(os, 10).print_int(entry.m_size);
        aio_setwidth(os, 50).print(entry.m_name);
        os.print("\n");
    }
    os.put('\n').flush();
}

void* KZMBasSrmDCAllocator::Alloc(unsigned size) { return allocTempData(static_cast<int>(size)); }

void* KZMBasSrmDCAllocator::Alloc(unsigned size, unsigned&) {
    return allocTempData(static_cast<int>(size));
}

void KZMBasSrmDCAllocator::Free(void* block) { freeTempData(block); }

void* KZMBasSrmDCAllocator::allocate(unsigned size, const void*) {
    return allocTempData(static_cast<int>(size));
}

void KZMBasSrmDCAllocator::deallocate(void* block, unsigned) { freeTempData(block); }

const KZMBasAllocator& KZMBasSrmDCAllocator::LargeBlockAllocator(
    const KZMBasAllocator& proposed) const {
    return proposed;
}
