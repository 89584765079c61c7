#include <cow/cow_List.impl.h>
#include <cow/cow_String.h>
#include <gtest/gtest.h>
#include <support/memory_failure.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace {

// An element that owns a block, so that a lost or twice destroyed one shows in the count of live
// blocks, and whose copying can run out of memory.
class Boxed {
public:
    Boxed(int value = 0) : m_value(::new (mem_Malloc(sizeof(int))) int(value)) {}
    Boxed(const Boxed& other) : Boxed(*other.m_value) {}
    Boxed& operator=(const Boxed& other) {
        Boxed copy(other);
        std::swap(m_value, copy.m_value);
        return *this;
    }
    ~Boxed() { mem_Free(m_value); }
    auto operator<=>(const Boxed& other) const { return *m_value <=> *other.m_value; }
    bool operator==(const Boxed& other) const { return *m_value == *other.m_value; }

private:
    int* m_value;
};

template <class T>
using Model = std::deque<T>;

// One edit, done to a list and to the std::deque that it must equal; i and j are any numbers.
template <class T>
struct Edit {
    const char* name;
    std::function<void(cow_List<T>&, int i, int j)> toList;
    std::function<void(Model<T>&, int i, int j)> toModel;
};

template <class T>
std::unique_ptr<T[]> Some(int n) {
    auto some = std::make_unique<T[]>(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) some[static_cast<std::size_t>(i)] = T(i * 7 % 10);
    return some;
}

// Indices are cut to the length, so every edit is possible on every list.
template <class T>
std::vector<Edit<T>> Edits() {
    using L = cow_List<T>;
    using M = Model<T>;
    const auto at = [](const auto& c, int i) {
        return i % std::max(1, static_cast<int>(std::distance(c.begin(), c.end())));
    };
    const auto eraseAt = [](M& m, int i) { m.erase(m.begin() + i); };
    return {
        {"Append", [](L& l, int i, int) { l.Append(T(i)); },
         [](M& m, int i, int) { m.push_back(T(i)); }},
        {"Prepend", [](L& l, int i, int) { l.Prepend(T(i)); },
         [](M& m, int i, int) { m.push_front(T(i)); }},
        {"InsertIndex", [at](L& l, int i, int j) { l.InsertIndex(at(l, i), T(j)); },
         [at](M& m, int i, int j) { m.insert(m.begin() + at(m, i), T(j)); }},
        {"Get",
         [at](L& l, int i, int j) {
             if (l.Length()) l.Get(at(l, i)) = T(j);
         },
         [at](M& m, int i, int j) {
             if (!m.empty()) m[static_cast<size_t>(at(m, i))] = T(j);
         }},
        {"AppendUnlessMember", [](L& l, int i, int) { l.AppendUnlessMember(T(i)); },
         [](M& m, int i, int) {
             if (std::find(m.begin(), m.end(), T(i)) == m.end()) m.push_back(T(i));
         }},
        {"Concatenate",
         [](L& l, int, int) {
             if (l.Length() < 150) l.Concatenate(l);
         },
         [](M& m, int, int) {
             if (m.size() < 150) {
                 const M copy(m);
                 m.insert(m.end(), copy.begin(), copy.end());
             }
         }},
        {"Fill", [](L& l, int i, int j) { l.Fill(i % 70, T(j)); },
         [](M& m, int i, int j) { m.assign(static_cast<size_t>(i % 70), T(j)); }},
        {"SetFromArray", [](L& l, int i, int) { l.SetFromArray(Some<T>(i % 70).get(), i % 70); },
         [](M& m, int i, int) {
             const auto a = Some<T>(i % 70);
             m.assign(a.get(), a.get() + i % 70);
         }},
        {"Resize", [](L& l, int i, int j) { l.Resize(j % 8 ? i % (l.Length() + 2) : 0); },
         [](M& m, int i, int j) {
             const size_t n = j % 8 ? static_cast<size_t>(i) % (m.size() + 2) : 0;
             if (n < m.size()) m.resize(n);
         }},
        {"RemoveIndex",
         [at](L& l, int i, int) {
             if (l.Length()) l.RemoveIndex(at(l, i));
         },
         [at, eraseAt](M& m, int i, int) {
             if (!m.empty()) eraseAt(m, at(m, i));
         }},
        {"Pop",
         [](L& l, int, int) {
             if (l.Length()) l.Pop();
         },
         [](M& m, int, int) {
             if (!m.empty()) m.pop_back();
         }},
        {"RemoveMember", [](L& l, int i, int) { l.RemoveMember(T(i)); },
         [](M& m, int i, int) {
             const auto found = std::find(m.begin(), m.end(), T(i));
             if (found != m.end()) m.erase(found);
         }},
        {"Sort", [](L& l, int, int) { l.Sort(); },
         [](M& m, int, int) { std::sort(m.begin(), m.end()); }},
        {"Slice",
         [at](L& l, int i, int) {
             if (l.Length()) l = l.Slice(at(l, i), l.Length() - at(l, i));
         },
         [at](M& m, int i, int) { m.erase(m.begin(), m.begin() + at(m, i)); }},
        {"Difference", [](L& l, int i, int) { l = l.Difference(L(T(i), T(i + 1))); },
         [](M& m, int i, int) {
             std::erase(m, T(i));
             std::erase(m, T(i + 1));
         }}};
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
                const auto& edit = edits[static_cast<size_t>(below(int(edits.size())))];
                const int i = below(100), j = below(10);
                edit.toList(lists[k], i, j);
                edit.toModel(models[k], i, j);
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

// Three lists that share: the table between the first two, blocks with the third.
template <class T>
struct Sharers {
    cow_List<T> list, copy, parted;
    Sharers(int n, bool prepended) {
        for (int i = 0; i < n; ++i) list.Append(T(i % 10));
        if (prepended) list.Prepend(T(5));
        parted = list;
        if (list.Length()) parted.Get(0) = T(1);
        copy = list;
    }
};

TYPED_TEST(ListModel, MemoryFailureLeavesTheValueBeforeOrAfter) {
    using T = TypeParam;
    for (const auto& edit : Edits<T>()) {
        for (const int n : {0, 3, 40, std::is_same_v<T, Boxed> ? 20 : 256}) {
            for (const bool parted : {false, true}) {
                SCOPED_TRACE(testing::Message() << edit.name << " on " << n);
                const int i = n == 3 ? 63 : n / 2 + 9, j = 3;
                Model<T> before;
                {
                    const Sharers<T> sharers(n, n == 40);
                    const auto& list = parted ? sharers.parted : sharers.list;
                    before.assign(list.begin(), list.end());
                }
                Model<T> after = before;
                edit.toModel(after, i, j);
                ForEveryAllocationFailure(
                    [&] { return Sharers<T>(n, n == 40); },
                    [&](Sharers<T>& s) { edit.toList(parted ? s.parted : s.list, i, j); },
                    [&](const Sharers<T>& s, bool succeeded) {
                        const auto& list = parted ? s.parted : s.list;
                        if (succeeded)
                            EXPECT_TRUE(Equals(list, after));
                        else if (!std::is_same_v<T, Boxed>)
                            EXPECT_TRUE(Equals(list, before) || Equals(list, after));
                        else
                            EXPECT_GE(std::distance(list.begin(), list.end()), 0);
                        const cow_List<T> untouched = Sharers<T>(n, n == 40).copy;
                        EXPECT_EQ(s.copy, untouched);
                    });
                if (this->HasFatalFailure()) return;
            }
        }
    }
}

}  // namespace
