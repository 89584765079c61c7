#include <gtest/gtest.h>
#include <models/model.h>

#include <ostream>

namespace models {

// Programs without a checksum beside the two that have one; sanitizers would take minutes for them.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr unsigned kMorePrograms = 0;
#else
constexpr unsigned kMorePrograms = 47;
#endif

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
    for (unsigned more = 0; more < kMorePrograms; ++more) Run(4 + more, 20000, false);
}

TEST_P(Models, AreAsBeforeOrAfterWhenMemoryIsRefused) { Run(3, 8000, true); }

INSTANTIATE_TEST_SUITE_P(All, Models, testing::ValuesIn(All()),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace models
