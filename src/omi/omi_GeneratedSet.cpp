#include <omi/omi_GeneratedSet.h>

#include <algorithm>
#include <climits>
#include <new>

namespace {

bool IsEmptyRange(int start, int end, int step) { return step == 0 || (start == 1 && end == 0); }

std::int64_t Magnitude(int step) {
    const std::int64_t wide = step;
    return wide < 0 ? -wide : wide;
}

// Sets the bits of start, start + stride, ... up to (for a negative stride down to) last.
void Record(omi_BlkBitVect& bits, std::int64_t start, std::int64_t last, std::int64_t stride,
            int n) {
    const std::int64_t steps = (last - start) / stride;
    if (stride > 0 ? start > last : start < last) return;
    for (std::int64_t i = 0; i <= steps && i < n; ++i)
        bits.SetBit(static_cast<unsigned int>(start + i * stride));
}

}  // namespace

omi_GeneratedSet& omi_GeneratedSet::operator=(const omi_GeneratedSet& other) {
    omi_GeneratedSet copy(other);
    m_starts.Swap(copy.m_starts);
    m_ends.Swap(copy.m_ends);
    m_steps.Swap(copy.m_steps);
    return *this;
}

bool omi_GeneratedSet::IsMember(int v) const {
    for (int i = 0; i < Count(); ++i) {
        const int start = m_starts[i];
        const int end = m_ends[i];
        if ((v > end && v > start) || (v < start && v < end)) continue;
        if (IsEmptyRange(start, end, m_steps[i])) continue;
        if ((std::int64_t{v} - start) % m_steps[i] == 0) return true;
    }
    return false;
}

void omi_GeneratedSet::GetRange(int i, int& start, int& end, int& step) const {
    const bool exists = i >= 0 && i < Count();
    start = exists ? m_starts[i] : 0;
    end = exists ? m_ends[i] : 0;
    step = exists ? m_steps[i] : 1;
}

void omi_GeneratedSet::Insert(int start, int end, int step) {
    MakeRoom(1);
    m_starts.Append(start);
    m_ends.Append(end);
    m_steps.Append(step);
}

void omi_GeneratedSet::Clear() {
    m_starts.Clear();
    m_ends.Clear();
    m_steps.Clear();
}

omi_GeneratedSet& omi_GeneratedSet::operator+=(const omi_GeneratedSet& other) {
    const int count = other.Count();
    MakeRoom(count);
    m_starts.Append(other.m_starts.Data(), count);
    m_ends.Append(other.m_ends.Data(), count);
    m_steps.Append(other.m_steps.Data(), count);
    return *this;
}

omi_BlkBitVect omi_GeneratedSet::Trim(int low, int high, int n) {
    omi_BlkBitVect cutOff;
    KZMBasVector<int> starts(m_starts);
    KZMBasVector<int> ends(m_ends);
    for (int i = 0; i < Count(); ++i) {
        int& start = starts[i];
        int& end = ends[i];
        if (IsEmptyRange(start, end, m_steps[i])) continue;
        const std::int64_t stride = Magnitude(m_steps[i]);
        if (start > high || end < low) {
            Record(cutOff, start, end, start <= end ? stride : -stride, n);
            start = 1;
            end = 0;
            continue;
        }
        if (start < low) {
            const std::int64_t kept = start + (std::int64_t{low} - start) / stride * stride;
            Record(cutOff, start, kept - 1, stride, n);
            start = static_cast<int>(kept);
        }
        if (end > high) {
            const std::int64_t last = start + (std::int64_t{high} - start) / stride * stride;
            Record(cutOff, last + stride, end, stride, n);
            end = high;
        }
    }
    m_starts.Swap(starts);
    m_ends.Swap(ends);
    return cutOff;
}

// Room in all three, before one of them grows.
void omi_GeneratedSet::MakeRoom(int more) {
    const int count = Count();
    if (more > INT_MAX - count) throw std::bad_alloc();
    if (count + more <= std::min({m_starts.Capacity(), m_ends.Capacity(), m_steps.Capacity()}))
        return;
    const std::int64_t grown = std::min<std::int64_t>(std::int64_t{count} + count / 2, INT_MAX);
    const int capacity = std::max({count + more, static_cast<int>(grown), 4});
    m_starts.Reserve(capacity);
    m_ends.Reserve(capacity);
    m_steps.Reserve(capacity);
}

void omi_GeneratedSetIT::NextGenerator() {
    while (m_set && ++m_generator < m_set->Count()) {
        int start, end, step;
        m_set->GetRange(m_generator, start, end, step);
        if (IsEmptyRange(start, end, step)) continue;
        const std::int64_t distance = std::int64_t{end} - start;
        const std::int64_t magnitude = Magnitude(step);
        m_current = start;
        m_stride = distance < 0 ? -magnitude : magnitude;
        m_left = distance / m_stride;
        return;
    }
    m_generator = -1;
    m_left = 0;
}
