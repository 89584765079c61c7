#include <alloc/mem_alloc.h>
#include <omi/omi_SparseSet.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <functional>
#include <new>
#include <utility>

namespace {

unsigned int BitOfNegative(int v) { return 0u - static_cast<unsigned int>(v); }

// A linear scan in runs that the compiler compares at once.
bool Contains(const int* first, const int* last, int v) {
    constexpr std::ptrdiff_t kRun = 64;
    for (; last - first >= kRun; first += kRun) {
        int found = 0;
        for (std::ptrdiff_t i = 0; i < kRun; ++i) found |= first[i] == v;
        if (found) return true;
    }
    return std::find(first, last, v) != last;
}

// The next multiple of 1024 from n on.
int RoundedCapacity(std::int64_t n) {
    const std::int64_t rounded = (n + 1023) / 1024 * 1024;
    return static_cast<int>(std::min<std::int64_t>(rounded, INT_MAX));
}

void List(const omi_BlkBitVect& bits, int* out) {
    omi_BlkBitVectTrav walk(&bits);
    unsigned int bit;
    for (bool more = walk.First(bit); more; more = walk.Next(bit)) *out++ = static_cast<int>(bit);
}

}  // namespace

omi_SparseSet::omi_SparseSet(const int* values, int n) : omi_SparseSet() {
    for (int i = 0; i < n; ++i) Insert(values[i]);
}

omi_SparseSet::omi_SparseSet(const omi_SparseSet& other) : omi_SparseSet() { *this += other; }

omi_SparseSet& omi_SparseSet::operator=(const omi_SparseSet& other) {
    omi_SparseSet copy(other);
    Swap(copy);
    return *this;
}

omi_SparseSet::~omi_SparseSet() {
    if (!m_negative) return;
    m_negative->~omi_BlkBitVect();
    mem_Free(m_negative);
}

bool omi_SparseSet::IsMember(int v) const {
    if (v < 0) return m_negative && m_negative->IsSet(BitOfNegative(v));
    MakeUnique();
    if (m_count == 0 || v < m_values[0] || v > m_values.Last()) return false;
    return Contains(m_values.begin(), m_values.end(), v);
}

void omi_SparseSet::Members(KZMBasVector<int>& out) const {
    out.Resize(Size());
    std::copy(begin(), end(), out.Data());
}

bool omi_SparseSet::operator==(const omi_SparseSet& other) const {
    if (Size() != other.Size() || !(m_values == other.m_values)) return false;
    return SizeNegative() == 0 || m_negative->Contains(*other.m_negative);
}

void omi_SparseSet::MakeUnique() const {
    if (m_unique || m_count < 2) return;
    int* const values = m_values.Data();
    int* const end = values + m_count;
    if (std::adjacent_find(values, end, std::greater_equal<int>()) == end) {
        m_unique = true;
        return;
    }
    const omi_BlkBitVect bits = Bits();
    const int count = static_cast<int>(bits.Size());
    if (count < m_count) m_values.Resize(count);
    List(bits, values);
    m_count = count;
    m_unique = true;
}

void omi_SparseSet::Insert(const omi_BlkBitVect& members) {
    const unsigned int count = members.Size();
    ReserveAdditional(static_cast<int>(std::min<unsigned int>(count, INT_MAX)));
    m_unique = m_count == 0;
    omi_BlkBitVectTrav walk(&members);
    unsigned int bit;
    for (bool more = walk.First(bit); more && bit <= INT_MAX; more = walk.Next(bit))
        m_values.Append(static_cast<int>(bit));
    m_count = m_values.Size();
}

void omi_SparseSet::Remove(int v) {
    if (v < 0) {
        if (m_negative) m_negative->UnsetBit(BitOfNegative(v));
        return;
    }
    m_values.Resize(
        static_cast<int>(std::remove(m_values.begin(), m_values.end(), v) - m_values.begin()));
    m_count = m_values.Size();
}

void omi_SparseSet::Remove(const omi_BlkBitVect& members) {
    const auto last = std::remove_if(m_values.begin(), m_values.end(), [&](int v) {
        return members.IsSet(static_cast<unsigned int>(v));
    });
    m_values.Resize(static_cast<int>(last - m_values.begin()));
    m_count = m_values.Size();
}

void omi_SparseSet::Clear() {
    if (m_negative) m_negative->Clear();
    m_values.Clear();
    m_count = 0;
    m_unique = false;
}

void omi_SparseSet::Reserve(int n) {
    if (n <= m_capacity) return;
    const int capacity = RoundedCapacity(n);
    m_values.Reserve(capacity);
    m_capacity = capacity;
}

// The array itself grows by half, unless the step is larger: filling a set one by one stays linear.
// Where that much cannot be had, the step alone may do.
void omi_SparseSet::ReserveAdditional(int n) {
    if (n > INT_MAX - m_count) throw std::bad_alloc();
    const int room = m_values.Capacity();
    const int needed = RoundedCapacity(m_count + n);
    const int grown = RoundedCapacity(std::int64_t{room} + room / 2);
    if (needed > room && grown > needed) {
        try {
            m_values.Reserve(grown);
        } catch (const std::bad_alloc&) {
        }
    }
    Reserve(m_count + n);
}

// What can fail comes first: room, then the negative part.
omi_SparseSet& omi_SparseSet::operator+=(const omi_SparseSet& other) {
    const int added = other.m_count;
    ReserveAdditional(added);
    const bool unique = IsEmpty() && other.m_unique;
    if (other.m_negative) NegativePart() |= *other.m_negative;
    m_unique = unique;
    m_values.Append(other.m_values.Data(), added);
    m_count += added;
    return *this;
}

omi_SparseSet& omi_SparseSet::operator-=(const omi_SparseSet& other) {
    omi_BlkBitVect bits = Bits();
    Assign(bits -= other.Bits());
    if (m_negative && other.m_negative) *m_negative -= *other.m_negative;
    return *this;
}

omi_SparseSet& omi_SparseSet::operator&=(const omi_SparseSet& other) {
    omi_BlkBitVect bits = Bits();
    Assign(bits &= other.Bits());
    if (m_negative && other.m_negative)
        *m_negative &= *other.m_negative;
    else if (m_negative)
        m_negative->Clear();
    return *this;
}

omi_SparseSet& omi_SparseSet::operator^=(const omi_SparseSet& other) {
    omi_BlkBitVect bits = Bits();
    bits ^= other.Bits();
    Reserve(static_cast<int>(bits.Size()));
    if (other.m_negative) NegativePart() ^= *other.m_negative;
    Assign(bits);
    return *this;
}

void omi_SparseSet::Swap(omi_SparseSet& other) noexcept {
    std::swap(m_negative, other.m_negative);
    m_values.Swap(other.m_values);
    std::swap(m_unique, other.m_unique);
    std::swap(m_count, other.m_count);
    std::swap(m_capacity, other.m_capacity);
}

void omi_SparseSet::InsertNegative(int v) { NegativePart().SetBit(BitOfNegative(v)); }

omi_BlkBitVect& omi_SparseSet::NegativePart() {
    if (!m_negative) {
        void* const memory = mem_OperatorNewThrow(sizeof(omi_BlkBitVect));
        try {
            m_negative = ::new (memory) omi_BlkBitVect;
        } catch (...) {
            mem_Free(memory);
            throw;
        }
    }
    return *m_negative;
}

// The values as bits. The largest comes first, so that the table of blocks grows only once.
omi_BlkBitVect omi_SparseSet::Bits() const {
    omi_BlkBitVect bits;
    if (m_count == 0) return bits;
    bits.SetBit(static_cast<unsigned int>(*std::max_element(m_values.begin(), m_values.end())));
    for (const int v : std::as_const(m_values)) bits.SetBit(static_cast<unsigned int>(v));
    return bits;
}

// The values become the members of `bits`.
void omi_SparseSet::Assign(const omi_BlkBitVect& bits) {
    const int count = static_cast<int>(bits.Size());
    Reserve(count);
    m_values.Resize(count);
    List(bits, m_values.Data());
    m_count = count;
    m_unique = true;
}

// The negative part's count is made exact now, because a later recount would free blocks under the
// walk.
void omi_SparseSetIT::First() {
    m_position = m_end = nullptr;
    m_inNegative = false;
    if (!m_set) return;
    m_set->MakeUnique();
    m_position = m_set->m_values.Data();
    m_end = m_position + m_set->m_count;
    if (m_set->SizeNegative() == 0) return;
    SetBitTraverseData(m_set->m_negative, &m_walk);
    m_inNegative = m_walk.First(m_bit);
}
