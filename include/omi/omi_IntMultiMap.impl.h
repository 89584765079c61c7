#pragma once
#include <cow/cow_List.h>
#include <generics/KZMBasVector.h>
#include <omi/omi_IntMultiMap.h>
#include <omi/omi_IntTable.impl.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

template <class V, class A>
omi_IntMultiMap<V, A>::omi_IntMultiMap()
    : m_entryCount(0),
      m_linkCount(0),
      m_chunks(nullptr),
      m_linksUsed(kChunkLinks),
      m_currentLink(nullptr) {}

// The base's copy still refers to the other's chains, until they have been copied too.
template <class V, class A>
omi_IntMultiMap<V, A>::omi_IntMultiMap(const omi_IntMultiMap& other)
    : Base(other),
      m_entryCount(other.m_entryCount),
      m_linkCount(0),
      m_chunks(nullptr),
      m_linksUsed(kChunkLinks),
      m_currentLink(nullptr) {
    CopyChains(nullptr);
}

template <class V, class A>
omi_IntMultiMap<V, A>::~omi_IntMultiMap() {
    FreeChunks(m_chunks, m_linksUsed);
}

template <class V, class A>
unsigned int omi_IntMultiMap<V, A>::Footprint() const {
    std::uint64_t bytes = std::uint64_t{Base::Footprint()} + sizeof *this - sizeof(Base);
    for (const Chunk* chunk = m_chunks; chunk; chunk = chunk->next)
        bytes += sizeof(Chunk) + kChunkLinks * sizeof(Link);
    return static_cast<unsigned int>(std::min<std::uint64_t>(bytes, UINT_MAX));
}

template <class V, class A>
bool omi_IntMultiMap<V, A>::ConstGetValues(int key, cow_List<V>& values) const {
    const Link* const first = GetFirst(key);
    cow_List<V> found;
    for (const Link* link = first; link; link = link->next) found.Append(link->value);
    values = found;
    return first != nullptr;
}

template <class V, class A>
bool omi_IntMultiMap<V, A>::Remove(int key, const V& value) {
    void** const cell = FindCell(key);
    if (!cell) return false;
    Link* first = static_cast<Link*>(*cell);
    for (Link** at = &first; *at;) {
        if ((*at)->value == value) {
            *at = (*at)->next;
            --m_entryCount;
        } else {
            at = &(*at)->next;
        }
    }
    *cell = first;
    if (!first) RemoveKey(key, cell);
    if (m_entryCount == 0)
        Clear();
    else if (m_linkCount > kChunkLinks && m_linkCount / m_entryCount > 2)
        SortValues(nullptr);
    return true;
}

template <class V, class A>
bool omi_IntMultiMap<V, A>::Remove(int key) {
    void** const cell = FindCell(key);
    if (!cell) return false;
    for (const Link* link = static_cast<Link*>(*cell); link; link = link->next) --m_entryCount;
    RemoveKey(key, cell);
    return true;
}

template <class V, class A>
void omi_IntMultiMap<V, A>::Clear() {
    Base::Clear();
    FreeChunks(m_chunks, m_linksUsed);
    m_entryCount = 0;
    m_linkCount = 0;
    m_chunks = nullptr;
    m_linksUsed = kChunkLinks;
    m_currentLink = nullptr;
}

template <class V, class A>
void omi_IntMultiMap<V, A>::SortValues(int (*compare)(const V&, const V&)) {
    CopyChains(compare);
}

template <class V, class A>
omi_IntMultiMap<V, A>::Chunks::~Chunks() {
    FreeChunks(newest, used);
}

template <class V, class A>
typename omi_IntMultiMap<V, A>::Link* omi_IntMultiMap<V, A>::Chunks::Add(const V& value) {
    if (used == kChunkLinks) {
        OpenChunk(newest);
        used = 0;
    }
    Link* const link = newest->links + used;
    ::new (static_cast<void*>(link)) Link{value, nullptr};
    ++used;
    return link;
}

template <class V, class A>
void omi_IntMultiMap<V, A>::RaiseAbsentKey() {
    std::abort();
}

template <class V, class A>
void omi_IntMultiMap<V, A>::OpenChunk(Chunk*& newest) {
    void* const record = mem_OperatorNewTinyThrow(sizeof(Chunk));
    try {
        void* const links = mem_Malloc(kChunkLinks * sizeof(Link));
        newest = ::new (record) Chunk{static_cast<Link*>(links), newest};
    } catch (...) {
        mem_Free(record);
        throw;
    }
}

template <class V, class A>
void omi_IntMultiMap<V, A>::FreeChunks(Chunk* newest, unsigned int used) {
    while (newest) {
        Chunk* const chunk = newest;
        newest = chunk->next;
        std::destroy_n(chunk->links, used);
        used = kChunkLinks;
        mem_Free(chunk->links);
        mem_Free(chunk);
    }
}

// Counts change when nothing can fail any more.
template <class V, class A>
void omi_IntMultiMap<V, A>::InsertUnusually(void** cell, int key, const V& value) {
    if (m_linksUsed == kChunkLinks) {
        OpenChunk(m_chunks);
        m_linksUsed = 0;
    }
    Link* const link = m_chunks->links + m_linksUsed;
    ::new (static_cast<void*>(link)) Link{value, cell ? static_cast<Link*>(*cell) : nullptr};
    if (cell)
        *cell = link;
    else
        InsertKey(key, link);
    Count(link);
}

template <class V, class A>
void omi_IntMultiMap<V, A>::InsertKey(int key, Link* link) {
    try {
        Base::Insert(key, link);
    } catch (...) {
        link->~Link();
        throw;
    }
}

// The table would leave the address of the chain in the cell.
template <class V, class A>
void omi_IntMultiMap<V, A>::RemoveKey(int key, void** cell) {
    *cell = nullptr;
    Base::Remove(key);
}

// Copies every chain into new chunks, then lets the cells refer to the copies, which nothing can
// interrupt. The copies of a key's links follow each other, so that needs only their number.
template <class V, class A>
void omi_IntMultiMap<V, A>::CopyChains(int (*compare)(const V&, const V&)) {
    Chunks chunks;
    KZMBasVector<const Link*> chain;
    Link* first = nullptr;
    Link* last = nullptr;
    const auto append = [&](const Link* link) {
        Link* const copy = chunks.Add(link->value);
        (last ? last->next : first) = copy;
        last = copy;
    };
    for (auto keys = Base::Walk(); !keys.IsDone(); keys.Next()) {
        const auto* link = static_cast<const Link*>(keys.CurrentValue());
        if (!compare) {
            for (; link; link = link->next) append(link);
            continue;
        }
        chain.Clear();
        for (; link; link = link->next) chain.Append(link);
        std::stable_sort(chain.begin(), chain.end(), [=](const Link* a, const Link* b) {
            return compare(a->value, b->value) < 0;
        });
        for (const Link* const each : chain) append(each);
    }
    Link* copy = first;
    for (auto keys = Base::Walk(); !keys.IsDone(); keys.Next()) {
        const Link* link = static_cast<const Link*>(std::exchange(keys.CurrentValue(), copy));
        for (; link->next; link = link->next) copy = copy->next;
        copy = std::exchange(copy->next, nullptr);
    }
    FreeChunks(m_chunks, m_linksUsed);
    m_linkCount = m_entryCount;
    m_chunks = std::exchange(chunks.newest, nullptr);
    m_linksUsed = chunks.used;
    m_currentLink = last;
}
