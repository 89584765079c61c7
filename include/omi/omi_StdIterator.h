#pragma once
#include <compare>
#include <concepts>
#include <cstddef>
#include <iterator>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

// What the iterators of keyed containers refer to: a key with a reference to its value, which can
// be taken apart, compared with a std::pair<K, V> and made one. No pair converts to it, so its
// common type with a std::pair<K, V> is that pair, which C++20 algorithms ask for. Items are
// ordered by key, then by value where values are.
template <class K, class V>
struct omi_PairItem : std::pair<K, const V&> {
    // Refers to the value: ends with it.
    omi_PairItem(const K& key, const V& value) : std::pair<K, const V&>(key, value) {}

    // By key and value, also against a pair.
    friend bool operator==(const omi_PairItem& a, const omi_PairItem& b) {
        return a.first == b.first && a.second == b.second;
    }
    friend bool operator==(const omi_PairItem& a, const std::pair<K, V>& b) {
        return a.first == b.first && a.second == b.second;
    }
    // By key, then by value.
    friend std::weak_ordering operator<=>(const omi_PairItem& a,
                                          const omi_PairItem& b) requires std::totally_ordered<V> {
        return Order(a, b.first, b.second);
    }
    friend std::weak_ordering operator<=>(
        const omi_PairItem& a, const std::pair<K, V>& b) requires std::totally_ordered<V> {
        return Order(a, b.first, b.second);
    }

private:
    static std::weak_ordering Order(const omi_PairItem& a, const K& key, const V& value) {
        if (a.first < key) return std::weak_ordering::less;
        if (key < a.first) return std::weak_ordering::greater;
        if (a.second < value) return std::weak_ordering::less;
        if (value < a.second) return std::weak_ordering::greater;
        return std::weak_ordering::equivalent;
    }
};

template <class K, class V>
struct std::tuple_size<omi_PairItem<K, V>> : std::tuple_size<std::pair<K, const V&>> {};
template <std::size_t I, class K, class V>
struct std::tuple_element<I, omi_PairItem<K, V>> : std::tuple_element<I, std::pair<K, const V&>> {};

// Read-only standard iterator over what a cursor visits, which is what begin() and end() of the
// sets, tables, multimaps and hash tables return. A Cursor is copyable, is default-constructed
// beyond its last item, and has IsDone(), Next(), CurrentItem() and ==.
//
// Items are made on the fly where the container does not hold them as such (a key with a reference
// to its value), so to C++17 algorithms this is an input iterator, to C++20 ones a forward one.
// Changes of the container that end its own iterators end this one too.
template <class Cursor>
class omi_StdIterator {
public:
    using reference = decltype(std::declval<const Cursor&>().CurrentItem());
    using value_type = typename Cursor::value_type;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::input_iterator_tag;
    using iterator_concept = std::forward_iterator_tag;

    // Keeps the item for the length of an expression such as it->second.
    class pointer {
    public:
        // Made and used by operator->.
        explicit pointer(reference item) : m_item(item) {}
        std::remove_reference_t<reference>* operator->() { return std::addressof(m_item); }

    private:
        reference m_item;
    };

    omi_StdIterator() = default;  // equals end()
    // At the place of that cursor.
    explicit omi_StdIterator(const Cursor& cursor) : m_cursor(cursor) {}

    reference operator*() const { return m_cursor.CurrentItem(); }
    pointer operator->() const { return pointer(**this); }

    omi_StdIterator& operator++() {
        m_cursor.Next();
        return *this;
    }
    omi_StdIterator operator++(int) {
        omi_StdIterator before(*this);
        m_cursor.Next();
        return before;
    }

    // Iterators of one container, by place; all ends are equal.
    friend bool operator==(const omi_StdIterator& a, const omi_StdIterator& b) {
        const bool done = a.m_cursor.IsDone();
        return done == b.m_cursor.IsDone() && (done || a.m_cursor == b.m_cursor);
    }

private:
    Cursor m_cursor;
};
