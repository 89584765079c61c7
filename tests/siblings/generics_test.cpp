#include <cow/cow_String.h>
#include <generics/HashValue.h>
#include <generics/KZMBasTree.h>
#include <generics/KZMBasVector.h>
#include <gtest/gtest.h>
#include <support/memory_failure.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using Strings = KZMBasVector<cow_String>;

TEST(Vector, MatchesTheStandardVectorUnderRandomEdits) {
    std::minstd_rand rng(1);
    Strings vector;
    std::vector<std::string> model;
    for (int step = 0; step < 5000; ++step) {
        const int size = vector.Size();
        const int at = size ? static_cast<int>(rng()) % size : 0;
        const std::string fresh = std::to_string(step);
        switch (rng() % 8) {
            case 0:
            case 1:
                vector.Append(fresh.c_str()), model.push_back(fresh);
                break;
            case 2:  // an element of its own, also when it grows
                if (size) vector.Append(vector[at]), model.push_back(std::string(model[at + 0U]));
                break;
            case 3:
                vector.Insert(at, fresh.c_str()), model.insert(model.begin() + at, fresh);
                break;
            case 4:
                if (size) vector.Remove(at), model.erase(model.begin() + at);
                break;
            case 5:
                vector.Append(vector.Data(), 0);
                vector = Strings(vector);
                break;
            case 6:
                if (step % 50 == 0)
                    vector.Resize(at, "x"), model.resize(static_cast<size_t>(at), "x");
                break;
            default:
                vector.Resize(size + 2, "y"), model.resize(model.size() + 2, "y");
                if (step % 90 == 0) vector.Compact();
        }
        ASSERT_TRUE(
            std::equal(vector.begin(), vector.end(), model.begin(), model.end(),
                       [](const cow_String& a, const std::string& b) { return a == b.c_str(); }));
    }
}

TEST(Vector, RoomIsKeptUntilCompacted) {
    KZMBasVector<int> vector;
    vector.Reserve(100);
    EXPECT_EQ(vector.Capacity(), 100);
    const int values[] = {3, 1, 2};
    vector.Append(values, 3);
    vector.Append(values, -1);
    vector.Remove(0, 2);
    EXPECT_EQ(vector, KZMBasVector<int>(1, 2));
    EXPECT_EQ(vector.Find(2) * 10 + vector.Find(7), -1);
    vector.Resize(-5);
    EXPECT_TRUE(vector.IsEmpty());
    EXPECT_EQ(vector.Capacity(), 100);
    vector.Compact();
    EXPECT_EQ(vector.Capacity(), 0);
}

TEST(Vector, OwnElementsMayBeAppendedAndNoneRemoved) {
    KZMBasVector<std::string> vector;
    vector.Append("a text longer than any small buffer");
    for (int i = 0; i < 4; ++i) vector.Append(vector.Data(), vector.Size());
    vector.Remove(0, 0);
    vector.Remove(3, -1);
    EXPECT_EQ(vector, KZMBasVector<std::string>(16, "a text longer than any small buffer"));
}

TEST(Tree, MatchesTheStandardMapUnderRandomEdits) {
    std::minstd_rand rng(1);
    KZMBasTree<int, cow_String> tree;
    std::map<int, std::string> model;
    for (int step = 0; step < 20000; ++step) {
        const int key = static_cast<int>(rng() % 300);
        const std::string value = std::to_string(step);
        switch (rng() % 4) {
            case 0:
                EXPECT_EQ(tree.Add(key, value.c_str()), model.emplace(key, value).second);
                break;
            case 1:
                tree.Set(key, value.c_str()), model[key] = value;
                break;
            default:
                EXPECT_EQ(tree.Remove(key), model.erase(key) == 1);
        }
        const auto bound = model.lower_bound(key);
        const auto it = tree.LowerBound(key);
        ASSERT_EQ(static_cast<bool>(it), bound != model.end());
        ASSERT_TRUE(!it || it.Key() == bound->first);
        ASSERT_EQ(tree.Size(), static_cast<int>(model.size()));
        if (step % 100 != 0) continue;
        if (step % 5000 == 0) tree = KZMBasTree<int, cow_String>(tree);
        auto at = tree.First();
        for (const auto& [k, v] : model) {
            ASSERT_TRUE(at && at.Key() == k && at.Value() == v.c_str());
            at = at.Next();
        }
        ASSERT_FALSE(at);
        auto back = tree.Last();
        for (auto last = model.rbegin(); last != model.rend(); ++last, back = back.Previous())
            ASSERT_EQ(back.Key(), last->first);
    }
}

TEST(Tree, AscendingKeysKeepItShallow) {
    int compared = 0;
    struct Counting {
        int value;
        int* count;
        bool operator<(const Counting& other) const { return ++*count, value < other.value; }
    };
    KZMBasTree<Counting, int> counted;
    for (int i = 0; i < 4096; ++i) counted.Add({i, &compared}, i);
    compared = 0;
    EXPECT_TRUE(counted.Find({4095, &compared}));
    EXPECT_LE(compared, 2 * 18);
}

TEST(Generics, MemoryFailureLeavesContainersAsTheyWere) {
    struct Subject {
        Strings vector{3, "an element"};
        KZMBasTree<int, cow_String> tree;
        Subject() { tree.Set(1, "one"); }
    };
    ForEveryAllocationFailure([] { return Subject(); },
                              [](Subject& subject) {
                                  KZMBasTree<int, cow_String> copy(subject.tree);
                                  copy[2] = "two";
                                  subject.tree = copy;
                                  Strings more(subject.vector);
                                  more.Insert(1, "inserted");
                                  more.Resize(40, "many");
                                  more.Compact();
                                  subject.vector = more;
                              },
                              [](const Subject& subject, bool done) {
                                  EXPECT_EQ(subject.vector.Size(), done ? 40 : 3);
                                  EXPECT_EQ(subject.tree.Find(1).Value(), "one");
                              });
}

TEST(Hash, BucketsAreInRangeAndEvenlyFilled) {
    EXPECT_EQ(HashValue(5, 0U), 0U);
    EXPECT_EQ(HashValue(5, 7U), HashValue(5U, 7U));
    EXPECT_EQ(HashValue("key", 1000U), HashValue(std::string("key").c_str(), 1000U));
    EXPECT_EQ(HashValue(static_cast<const char*>(nullptr), 9U), HashValue("", 9U));
    for (const unsigned stride : {1U, 8U, 4096U}) {
        std::vector<int> filled(64);
        for (unsigned i = 0; i < 6400; ++i) ++filled[HashValue(i * stride, 64U)];
        EXPECT_LT(*std::max_element(filled.begin(), filled.end()), 160) << stride;
    }
    std::vector<double> cells(1000);
    std::vector<int> filled(16);
    for (const double& cell : cells) ++filled[HashValue(static_cast<const void*>(&cell), 16U)];
    EXPECT_LT(*std::max_element(filled.begin(), filled.end()), 130);
}

}  // namespace
