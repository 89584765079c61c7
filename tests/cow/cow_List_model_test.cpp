#include <cow/cow_List.impl.h>
#include <cow/cow_String.h>
#include <gtest/gtest.h>
#include <support/boxed.h>
#include <support/memory_failure.h>

#include <algorithm>
#include <deque>
#include <iterator>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

template <class T>
using Model = std::deque<T>;

// One edit, done to a list and to the std::deque that it must equal; `i` is below the length.
template <class T>
struct Edit {
    const char* name;
    bool needsElements;
    void (*toList)(cow_List<T>&, int i, const T& v);
    void (*toModel)(Model<T>&, int i, const T& v);
};

template <class T>
std::vector<Edit<T>> Edits() {
    using L = cow_List<T>;
    using M = Model<T>;
    return {
        {"Append", 0, [](L& l, int, const T& v) { l.Append(v); },
         [](M& m, int, const T& v) { m.push_back(v); }},
        {"Prepend", 0, [](L& l, int, const T& v) { l.Prepend(v); },
         [](M& m, int, const T& v) { m.push_front(v); }},
        {"InsertIndex", 0, [](L& l, int i, const T& v) { l.InsertIndex(i, v); },
         [](M& m, int i, const T& v) { m.insert(m.begin() + i, v); }},
        {"Get", 1, [](L& l, int i, const T& v) { l.Get(i) = v; },
         [](M& m, int i, const T& v) { m.begin()[i] = v; }},
        {"AppendUnlessMember", 0, [](L& l, int, const T& v) { l.AppendUnlessMember(v); },
         [](M& m, int, const T& v) {
             if (!std::count(m.begin(), m.end(), v)) m.push_back(v);
         }},
        {"Concatenate", 0,
         [](L& l, int, const T&) {
             if (l.Length() < 150) l.Concatenate(l);
         },
         [](M& m, int, const T&) {
             if (m.size() < 150) std::copy_n(M(m).begin(), m.size(), std::back_inserter(m));
         }},
        {"Fill", 0, [](L& l, int i, const T& v) { l.Fill(3 * i % 70, v); },
         [](M& m, int i, const T& v) { m.assign(static_cast<std::size_t>(3 * i % 70), v); }},
        {"SetFromArray", 1, [](L& l, int i, const T&) { l.SetFromArray(&l.ConstGet(i), 1); },
         [](M& m, int i, const T&) { m = M(1, m.begin()[i]); }},
        {"Resize", 0, [](L& l, int i, const T& v) { l.Resize(v == T(1) ? 0 : i); },
         [](M& m, int i, const T& v) { m.resize(v == T(1) ? 0 : static_cast<std::size_t>(i)); }},
        {"RemoveIndex", 1, [](L& l, int i, const T&) { l.RemoveIndex(i); },
         [](M& m, int i, const T&) { m.erase(m.begin() + i); }},
        {"Pop", 1, [](L& l, int, const T&) { l.Pop(); }, [](M& m, int, const T&) { m.pop_back(); }},
        {"RemoveMember", 1, [](L& l, int i, const T&) { l.RemoveMember(l.ConstGet(i)); },
         [](M& m, int i, const T&) { m.erase(std::find(m.begin(), m.end(), m.begin()[i])); }},
        {"Sort", 0, [](L& l, int, const T&) { l.Sort(); },
         [](M& m, int, const T&) { std::sort(m.begin(), m.end()); }},
        {"Slice", 1, [](L& l, int i, const T&) { l = l.Slice(i / 4, l.Length() - i / 4); },
         [](M& m, int i, const T&) { m.erase(m.begin(), m.begin() + i / 4); }},
        {"Difference", 0, [](L& l, int, const T& v) { l = l.Difference(L(v)); },
         [](M& m, int, const T& v) { std::erase(m, v); }}};
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
    for (unsigned seed = 1; seed <= 10; ++seed) {
        SCOPED_TRACE(seed);
        std::minstd_rand rng(seed);
        const auto below = [&rng](int n) { return static_cast<int>(rng() % unsigned(n)); };
        host_heap::Watch();
        {
            cow_List<T> lists[6];
            Model<T> models[6];
            lists[0] = cow_List<T>(cow_ListConstruct(), 300);
            for (int step = 0; step < 3000; ++step) {
                const int k = below(6);
                if (below(8) == 0) {
                    const int from = below(6);
                    lists[k] = lists[from];
                    models[k] = models[from];
                }
                const auto& edit = edits[rng() % edits.size()];
                if (edit.needsElements && models[k].empty()) continue;
                const int i = below(std::max(1, lists[k].Length()));
                const T v(below(10));
                edit.toList(lists[k], i, v);
                edit.toModel(models[k], i, v);
                ASSERT_TRUE(Equals(lists[k], models[k])) << edit.name << " in step " << step;
                if (step % 50) continue;
                for (int each = 0; each < 6; ++each)
                    ASSERT_TRUE(Equals(lists[each], models[each])) << edit.name << step;
            }
        }
        EXPECT_EQ(host_heap::g_probe.live, 0);
        host_heap::Unwatch();
    }
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
    for (const auto& edit : Edits<T>()) {
        for (const int n : {0, 3, 40, copyingFails ? 20 : 256}) {
            if (edit.needsElements && n == 0) continue;
            for (const bool fromParted : {false, true}) {
                SCOPED_TRACE(testing::Message() << edit.name << " on " << n);
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
                        EXPECT_EQ(sharers.copy, start.copy);
                        EXPECT_EQ(sharers.parted, start.parted);
                    });
                if (this->HasFatalFailure()) return;
            }
        }
    }
}

}  // namespace
