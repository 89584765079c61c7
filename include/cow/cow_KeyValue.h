#pragma once

// What iterators over keyed containers point at; also an element of their initializer lists. Works
// with structured bindings: for (const auto& [key, value] : map) ...
template <class K, class V>
struct cow_KeyValue {
    // In memory order; containers hand entries out as constants.
    K key;
    V value;
    bool operator==(const cow_KeyValue&) const = default;
};
