#include <gtest/gtest.h>
#include <models/model.h>

#include <ostream>

namespace models {

void PrintTo(const Model& model, std::ostream* os) { *os << model.name; }

class Models : public testing::TestWithParam<Model> {
protected:
    static std::uint64_t Run(unsigned seed, std::size_t size, bool refuse) {
        const auto bytes = RandomBytes(seed, size);
        try {
            return GetParam().run({bytes.data(), bytes.size()}, refuse);
        } catch (const Difference& difference) {
            ADD_FAILURE() << "seed " << seed << ": " << difference.what();
            return 0;
        }
    }
};

TEST_P(Models, EqualTheirTwinsAndEndInTheSameBitsEverywhere) {
    const std::uint64_t first = Run(1, 20000, false);
    EXPECT_EQ(first ^ Run(2, 20000, false), GetParam().sum);
}

TEST_P(Models, AreAsBeforeOrAfterWhenMemoryIsRefused) { Run(3, 8000, true); }

INSTANTIATE_TEST_SUITE_P(All, Models, testing::ValuesIn(All()),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace models
