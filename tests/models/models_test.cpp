#include <gtest/gtest.h>
#include <models/model.h>

#include <ostream>

namespace models {

void PrintTo(const Model& model, std::ostream* os) { *os << model.name; }

class Models : public testing::TestWithParam<Model> {
protected:
    static Outcome Run(unsigned seed, std::size_t size, bool refuse, unsigned keys = ~0u) {
        const auto bytes = RandomBytes(seed, size);
        try {
            return GetParam().run(Program(bytes, keys), refuse);
        } catch (const Difference& difference) {
            ADD_FAILURE() << "seed " << seed << ": " << difference.what();
            return {};
        }
    }
};

TEST_P(Models, EqualTheirTwinsForTwoHundredThousandSteps) {
    unsigned steps = 0;
    for (unsigned seed = 4; steps < 200000 && !HasFailure(); ++seed)
        steps += Run(seed, 20000, false, 0xffff).steps;
}

TEST_P(Models, EndInTheSameBitsEverywhere) {
    EXPECT_EQ(Run(1, 20000, false).sum ^ Run(2, 20000, false).sum, GetParam().sum);
}

TEST_P(Models, AreAsBeforeOrAfterWhenMemoryIsRefused) {
    RecordProperty("refused", Run(3, 8000, true).refused);
}

INSTANTIATE_TEST_SUITE_P(All, Models, testing::ValuesIn(All()),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace models
