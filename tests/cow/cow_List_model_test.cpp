#include <cow/cow_List.impl.h>
#include <cow/cow_String.h>
#include <gtest/gtest.h>
#include <support/boxed.h>
#include <support/memory_failure.h>
#include <support/random.h>

#include <algorithm>
#include <deque>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

template <class T>
using Model = std::deque<T>;

// One edit, done to a list and to the std::deque that it must equal; `i` is below the length, `v`
// may be an element of the list.
template <class T>
struct Edit {
    bool needsElements;
    void (*toList)(cow_List<T>&, int i, const T& v);
    void (*toModel)(Model<T>&, int i, const T& v);
};

template <class T>
std::vector<Edit<T>> Edits() {
    using L = cow_List<T>;
    using M = Model<T>;
    using I = const int;
    using V = const T&;
    return {
        {0, [](L& l, I, V v) { l.Append(v); }, [](M& m, I, V v) { m.push_back(v); }},
        {0, [](L& l, I, V v) { l.Prepend(v); }, [](M& m, I, V v) { m.push_front(v); }},
        {0, [](L& l, I i, V v) { l.InsertIndex(i, v); },
         [](M& m, I i, V v) { m.insert(m.begin() + i, v); }},
        {1, [](L& l, I i, V v) { l.Get(i) = v; }, [](M& m, I i, V v) { m.begin()[i] = v; }},
        {0, [](L& l, I, V v) { l.AppendUnlessMember(v); },
         [](M& m, I, V v) { std::count(m.begin(), m.end(), v) ? void() : m.push_back(v); }},
        {0, [](L& l, I, V) { l.Length() < 150 ? l.Concatenate(l) : l; },
         [](M& m, I, V) {
             if (const M c = m; c.size() < 150) m.insert(m.end(), c.begin(), c.end());
         }},
        {0, [](L& l, I i, V v) { l.Fill(3 * i % 70, v); },
         [](M& m, I i, V v) { m.assign(static_cast<std::size_t>(3 * i % 70), v); }},
        {1, [](L& l, I i, V) { l.SetFromArray(&l.ConstGet(i), 1); },
         [](M& m, I i, V) { m = M(1, m.begin()[i]); }},
        {0, [](L& l, I i, V v) { l.Resize(v == T(1) ? 0 : i); },
         [](M& m, I i, V v) { m.resize(v == T(1) ? 0 : static_cast<std::size_t>(i)); }},
        {1, [](L& l, I i, V) { l.RemoveIndex(i); }, [](M& m, I i, V) { m.erase(m.begin() + i); }},
        {1, [](L& l, I, V) { l.Pop(); }, [](M& m, I, V) { m.pop_back(); }},
        {1, [](L& l, I i, V) { l.RemoveMember(l.ConstGet(i)); },
         [](M& m, I i, V) { m.erase(std::find(m.begin(), m.end(), m.begin()[i])); }},
        {0, [](L& l, I, V) { l.Sort(); }, [](M& m, I, V) { std::sort(m.begin(), m.end()); }},
        {1, [](L& l, I i, V) { l = l.Slice(i / 4, l.Length() - i / 4); },
         [](M& m, I i, V) { m.erase(m.begin(), m.begin() + i / 4); }},
        {0, [](L& l, I, V v) { l = l.Difference(L(v)); }, [](M& m, I, V v) { std::erase(m, v); }}};
}

template <class T>
bool Equals(const cow_List<T>& list, const Model<T>& model) {
    return std::equal(list.begin(), list.end(), model.begin(), model.end());
}

template <class T>
class ListModel : public testing::Test {};
using ElementTypes = testing::Types<int, bool, double, cow_String, Boxed>;
TYPED_TEST_SUITE(ListModel, ElementTypes);

// The lists copy each other at random, so a write that leaks through a shared block shows in a list
// nobody wrote.
TYPED_TEST(ListModel, CopiesStayIndependentUnderRandomEdits) {
    using T = TypeParam;
    const auto edits = Edits<T>();
    host_heap::Watch();
    for (unsigned seed = 1; seed <= 10; ++seed) {
        Random rng(seed);
        std::vector<std::pair<cow_List<T>, Model<T>>> all(6);
        all[0].first = cow_List<T>(cow_ListConstruct(), 300);
        for (int step = 0; step < 3000; ++step) {
            if (rng.OneIn(8)) all[rng.Below(6)] = all[rng.Below(6)];
            auto& [list, model] = all[rng.Below(6)];
            const std::size_t kind = rng.Below(static_cast<unsigned>(edits.size()));
            SCOPED_TRACE(testing::Message() << "seed " << seed << " edit " << kind);
            if (edits[kind].needsElements && model.empty()) continue;
            const auto length = static_cast<unsigned>(std::max(1, list.Length()));
            const int i = static_cast<int>(rng.Below(length));
            const int own = static_cast<int>(rng.Below(4 * length));
            const T v = own < list.Length() ? list.ConstGet(own) : T(own % 10);
            edits[kind].toList(list, i, own < list.Length() ? list.ConstGet(own) : v);
            edits[kind].toModel(model, i, v);
            ASSERT_TRUE(Equals(list, model));
            if (step % 50) continue;
            for (const auto& [each, itsModel] : all) ASSERT_TRUE(Equals(each, itsModel));
        }
    }
    EXPECT_EQ(host_heap::g_probe.live, 0);
    host_heap::Unwatch();
}

// Lists that share: the table between the first two, blocks with the third.
template <class T>
struct Sharers {
    cow_List<T> written, copy, parted;
    Sharers(int n, bool fromParted) {
        for (int i = 0; i < n; ++i) written.Append(T(i % 10));
        if (n == 40) written.Prepend(T(5));
        parted = written;
        if (n > 0) parted.Get(0) = T(2);
        copy = fromParted ? parted : written;
        if (fromParted) std::swap(written, parted);
    }
};

TYPED_TEST(ListModel, MemoryFailureLeavesTheValueBeforeOrAfter) {
    using T = TypeParam;
    const bool copyingFails = std::is_same_v<T, Boxed>;
    const auto edits = Edits<T>();
    constexpr int kLengths[] = {0, 3, 40, 256};
    for (std::size_t kind = 0; kind < 8 * edits.size(); ++kind) {
        const auto& edit = edits[kind / 8];
        const int n = kind / 2 % 4 == 3 && copyingFails ? 20 : kLengths[kind / 2 % 4];
        const bool fromParted = kind % 2;
        if (edit.needsElements && n == 0) continue;
        SCOPED_TRACE(testing::Message() << "edit " << kind / 8 << " on " << n);
        const Sharers<T> start(n, fromParted);
        const T v(7);
        const Model<T> before(start.written.begin(), start.written.end());
        Model<T> after = before;
        edit.toModel(after, n / 2, v);
        ForEveryAllocationFailure(
            [&] { return Sharers<T>(n, fromParted); },
            [&](auto& sharers) { edit.toList(sharers.written, n / 2, v); },
            [&](const auto& sharers, bool succeeded) {
                const bool changed = Equals(sharers.written, after);
                EXPECT_TRUE(changed || !succeeded);
                // An edit with elements whose own copying fails may stop half way.
                EXPECT_TRUE(changed || copyingFails || Equals(sharers.written, before));
                EXPECT_TRUE(sharers.copy == start.copy && sharers.parted == start.parted);
            });
        if (this->HasFatalFailure()) return;
    }
}

}  // namespace
