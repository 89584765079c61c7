#pragma once
#include <coreutils/atr_String.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_List.h>
#include <cow/cow_String.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <support/memory_failure.h>
#include <support/random.h>

#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

// What the tests of the keyed containers share.

template <class K>
K NthKey(int n) {
    return static_cast<K>(n);
}
template <>
inline cow_String NthKey(int n) {
    return cow_String(n);
}
template <>
inline atr_String NthKey(int n) {
    return cow_String(n);
}

template <class C>
using ModelOf = std::map<typename C::key_type, typename C::mapped_type>;

template <class C>
ModelOf<C> Contents(const C& container) {
    ModelOf<C> contents;
    for (const auto& [key, value] : container)
        EXPECT_TRUE(contents.emplace(key, value).second) << "a key twice";
    return contents;
}

// The node objects that a container consists of.
template <class C>
std::set<const void*> NodesOf(const C& container) {
    std::set<const void*> nodes;
    for (auto walk = container.begin(); walk != container.end(); ++walk)
        nodes.insert(walk.CurrentNode());
    return nodes;
}

// How many nodes of `after` are not nodes of `before`.
template <class C>
int NewNodes(const C& before, const C& after) {
    const auto old = NodesOf(before);
    int fresh = 0;
    for (const void* node : NodesOf(after)) fresh += !old.contains(node);
    return fresh;
}

// The allocations that an operation makes.
template <class Operation>
long AllocationsOf(const Operation& operation) {
    host_heap::Watch();
    operation();
    const long requests = host_heap::g_probe.requests;
    host_heap::Unwatch();
    return requests;
}

// Containers that copy one another at random, each with the std::map it must equal, so that a write
// that reaches a shared node shows in a container nobody wrote. edit(container, model, key, value,
// rng) makes one change to both.
template <class C, class Edit, class Check>
void ExpectCopiesToStayIndependent(int steps, unsigned keys, const Edit& edit, const Check& check) {
    for (unsigned seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(seed);
        Random rng(seed);
        std::vector<std::pair<C, ModelOf<C>>> all(5);
        for (int step = 0; step < steps; ++step) {
            if (rng.OneIn(20)) all[rng.Below(5)] = all[rng.Below(5)];
            auto& [container, model] = all[rng.Below(5)];
            const auto key = NthKey<typename C::key_type>(static_cast<int>(rng.Below(keys)));
            edit(container, model, key, typename C::mapped_type(step), rng);
            if (step % 256 != 0) continue;
            for (const auto& [each, itsModel] : all) {
                ASSERT_EQ(Contents(each), itsModel);
                check(each);
            }
        }
    }
}

template <class C>
struct Write {
    const char* what;
    std::vector<int> keys;  // of the container that is written, with equal values
    void (*apply)(C&);
};

// Refuses each allocation of each write in turn, on a private and on a shared container. Where a
// write throws, the entries are as before or, if it may be done already, as after it; a copy never
// notices. check(container) sees every outcome.
template <class C, class Check>
void ExpectWritesToSurviveExhaustion(std::initializer_list<Write<C>> writes, bool mayBeDone,
                                     const Check& check) {
    for (const auto& [what, keys, apply] : writes) {
        SCOPED_TRACE(what);
        std::vector<std::pair<int, int>> entries;
        for (const int key : keys) entries.emplace_back(key, key);
        const C full(entries.begin(), entries.end());
        const auto before = Contents(full);
        C written = full;
        apply(written);
        const auto after = Contents(written);
        for (const bool shared : {false, true})
            ForEveryAllocationFailure(
                [&] { return shared ? full : C(entries.begin(), entries.end()); },
                [&](C& container) { apply(container); },
                [&](const C& container, bool succeeded) {
                    const auto now = Contents(container);
                    EXPECT_TRUE(now == (succeeded ? after : before) || (mayBeDone && now == after));
                    EXPECT_EQ(Contents(full), before);
                    check(container);
                });
    }
}
