#include <cow/cow_String.h>
#include <generics/KZMBasTree.h>
#include <generics/KZMBasVector.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using Strings = KZMBasVector<std::string>;

TEST(Vector, MatchesTheStandardVectorUnderRandomEdits) {
    std::minstd_rand rng(1);
    Strings vector;
    std::vector<std::string> model;
    for (int step = 0; step < 5000; ++step) {
        const int size = vector.Size();
        const int at = size ? static_cast<int>(rng()) % size : 0;
        const std::string fresh = std::to_string(step);
        const unsigned kind = static_cast<unsigned>(rng() % 8);
        if (kind == 0) vector.Append(fresh.c_str()), model.push_back(fresh);
        if (kind == 1) vector.Insert(at, fresh.c_str()), model.insert(model.begin() + at, fresh);
        if (kind == 2 && size)
            vector.Append(vector[at]), model.push_back(std::string(model[at + 0U]));
        if (kind == 3 && size) vector.Remove(at), model.erase(model.begin() + at);
        if (kind == 4 && size) {  // own elements; taking none away moves nothing
            vector = Strings(vector);
            const int n = 1 + at % std::min(size, 3);
            vector.Append(vector.Data(), n);
            for (int i = 0; i < n; ++i) model.push_back(std::string(model[i + 0U]));
            vector.Remove(at, 0);
        }
        if (kind == 5 && step % 50 == 0) vector.Resize(at, "x"), model.resize(at + 0U, "x");
        if (kind > 5) vector.Resize(size + 2, "y"), model.resize(model.size() + 2, "y");
        if (step % 90 == 0) vector.Compact();
        ASSERT_TRUE(std::equal(vector.begin(), vector.end(), model.begin(), model.end(),
                               [](const std::string& a, const std::string& b) { return a == b; }));
    }
}

TEST(Tree, MatchesTheStandardMapUnderRandomEdits) {
    std::minstd_rand rng(1);
    KZMBasTree<int, cow_String> tree;
    std::map<int, std::string> model;
    for (int step = 0; step < 20000; ++step) {
        const int key = static_cast<int>(rng() % 300);
        const std::string value = std::to_string(step);
        const unsigned kind = static_cast<unsigned>(rng() % 4);
        if (kind == 0 && tree.Add(key, value.c_str()) != model.emplace(key, value).second) FAIL();
        if (kind == 1) tree.Set(key, value.c_str()), model[key] = value;
        if (kind > 1 && tree.Remove(key) != (model.erase(key) == 1)) FAIL();
        const auto bound = model.lower_bound(key);
        const auto it = tree.LowerBound(key);
        ASSERT_EQ(static_cast<bool>(it), bound != model.end());
        ASSERT_TRUE(!it || it.Key() == bound->first);
        ASSERT_EQ(tree.Size(), static_cast<int>(model.size()));
        if (step % 100 != 0) continue;
        if (step % 5000 == 0) tree = KZMBasTree<int, cow_String>(tree);
        auto at = tree.First();
        for (auto each = model.begin(); each != model.end(); ++each, at = at.Next())
            ASSERT_TRUE(at && at.Key() == each->first && at.Value() == each->second.c_str());
        ASSERT_FALSE(at);
        auto back = tree.Last();
        for (auto last = model.rbegin(); last != model.rend(); ++last, back = back.Previous())
            ASSERT_EQ(back.Key(), last->first);
    }
}

}  // namespace
