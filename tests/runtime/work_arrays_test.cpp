#include <coreutils/aio_ostream.h>
#include <gtest/gtest.h>
#include <runtime/KZMBasSrmDCAllocator.h>

#include <string>
#include <vector>

#include "support/memory_failure.h"

namespace {

// Hands out addresses whatever the size and writes down what it is asked for.
struct Source : KZMBasAllocator {
    void* Alloc(unsigned size) override {
        asked.push_back(size);
        return refuse ? nullptr : &places[asked.size() % 64];
    }
    void* Alloc(unsigned size, unsigned&) override { return Alloc(size); }
    void Free(void* block) override { freed.push_back(block); }
    void* allocate(unsigned size, const void*) override { return Alloc(size); }
    void deallocate(void* block, unsigned) override { Free(block); }

    std::vector<unsigned> asked;
    std::vector<void*> freed;
    bool refuse = false;
    double places[64];
};

using Figures = std::vector<std::uint32_t>;
Figures FiguresOf(const KZMBasSrmDCAllocator& arrays) {
    return {arrays.registeredBytes(), arrays.freedVariableBytes(), arrays.tempBytesAllocated(),
            arrays.tempBytesFreed()};
}

std::string Report(const KZMBasSrmDCAllocator& arrays) {
    std::string text;
    aio_ostream os(text);
    arrays.dumpVariables(os);
    EXPECT_EQ(os.flush_count(), 3u);
    return text;
}

const std::string kHead =
    "REGISTERED MEMORY REPORT\n------------------------\n     Index    Length      "
    "Size" +
    std::string(46, ' ') + "Name\n     -----    ------      ----" + std::string(46, ' ') + "----\n";

TEST(WorkArrays, NumbersCountUpAndAreNeverUsedAgain) {
    Source source;
    KZMBasSrmDCAllocator arrays(source);
    EXPECT_EQ(Report(arrays), kHead + "\n");
    EXPECT_EQ(arrays.registerVariable(3, 8, "abc"), 0);
    EXPECT_EQ(Report(arrays),
              kHead + "         0         3         8" + std::string(47, ' ') + "abc\n\n");
    EXPECT_EQ(arrays.registerVariable(2, 4, "abc"), 1);
    EXPECT_EQ(arrays.registerVariable(1, 4, nullptr), 2);
    EXPECT_EQ(arrays.findVariable("abc"), 0);
    EXPECT_EQ(arrays.findVariable(nullptr), 2);
    EXPECT_STREQ(arrays.getName(2), "");
    void* const block = arrays.getVariable(0);
    EXPECT_EQ(arrays.constGetVariable(0), block);

    int index = 0;
    arrays.freeVariable(index);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(source.freed, std::vector<void*>{block});
    EXPECT_EQ(arrays.findVariable("abc"), 1);
    EXPECT_EQ(arrays.findVariable("ab"), -1);
    EXPECT_EQ(FiguresOf(arrays), (Figures{36, 24, 0, 0}));
    const std::string longName(60, 'n');
    EXPECT_EQ(arrays.registerVariable(4000000000u, 0, longName.c_str()), 3);
    EXPECT_EQ(Report(arrays), kHead + "         1         2         4" + std::string(47, ' ') +
                                  "abc\n         2         1         4" + std::string(50, ' ') +
                                  "\n         34000000000         0" + longName + "\n\n");
    arrays.freeAllVariables();
    EXPECT_EQ(source.freed.size(), 4u);
    EXPECT_EQ(Report(arrays), kHead + "\n");
    EXPECT_EQ(FiguresOf(arrays), (Figures{36, 36, 0, 0}));
    EXPECT_EQ(arrays.registerVariable(1, 1, "x"), 4);
}

TEST(WorkArrays, ANumberWithoutAVariableIsAnEmptyEntryOnceAskedFor) {
    Source source;
    KZMBasSrmDCAllocator arrays(source);
    EXPECT_EQ(arrays.getVariable(7), nullptr);
    EXPECT_EQ(arrays.constGetVariable(0), nullptr);
    EXPECT_EQ(arrays.findVariable(""), 0);
    EXPECT_EQ(arrays.registerVariable(1, 8, "matrix"), 0);  // in place of the empty entry
    EXPECT_EQ(arrays.findVariable(""), 7);
    EXPECT_EQ(Report(arrays), kHead + "         0         1         8" + std::string(44, ' ') +
                                  "matrix\n         7         0         0" + std::string(50, ' ') +
                                  "\n\n");
    for (int unknown : {9, 7}) arrays.freeVariable(unknown);
    EXPECT_EQ(source.freed, (std::vector<void*>{nullptr, nullptr}));
    EXPECT_EQ(FiguresOf(arrays), (Figures{8, 0, 0, 0}));
}

TEST(WorkArrays, ProductsAndSumsOfBytesWrapAt32Bits) {
    Source source;
    KZMBasSrmDCAllocator arrays(source);
    arrays.registerVariable(0x10000, 0x10000, "a");
    arrays.registerVariable(2, -1, "b");
    arrays.registerVariable(3, 8, "c");
    double* const doubles = arrays.allocTempDouble(0x20000000);
    int* const ints = arrays.allocTempInt(-1);
    arrays.allocTempData(6);
    EXPECT_EQ(source.asked, (std::vector<unsigned>{0, 0xFFFFFFFE, 24, 0, 0xFFFFFFFC, 6}));
    EXPECT_EQ(FiguresOf(arrays), (Figures{22, 0, 2, 0}));
    arrays.freeTempData(doubles);
    arrays.freeTempData(ints);
    arrays.freeTempData(static_cast<void*>(ints));  // no longer known
    EXPECT_EQ(source.freed, (std::vector<void*>{doubles, ints, ints}));
    EXPECT_EQ(FiguresOf(arrays), (Figures{22, 0, 2, 0xFFFFFFFC}));
}

TEST(WorkArrays, AsAGeneralAllocatorTheyServeTemporaryBlocksAlsoOfADerivedClass) {
    struct Derived : KZMBasSrmDCAllocator {
        using KZMBasSrmDCAllocator::KZMBasSrmDCAllocator;
        void* allocTempData(int bytes) override {
            taken += std::to_string(bytes) + " ";
            return KZMBasSrmDCAllocator::allocTempData(bytes);
        }
        void freeTempData(void* block) override {
            taken += "free ";
            KZMBasSrmDCAllocator::freeTempData(block);
        }
        std::string taken;
    };
    Source source;
    Derived arrays(source);
    KZMBasAllocator& general = arrays;
    unsigned granted = 77;
    general.Free(general.Alloc(1));
    general.deallocate(general.Alloc(2, granted), 2);
    general.allocate(3, nullptr);
    arrays.freeTempData(arrays.allocTempDouble(1));
    EXPECT_EQ(granted, 77u);
    EXPECT_EQ(arrays.taken, "1 free 2 free 3 8 free ");
    EXPECT_EQ(FiguresOf(arrays), (Figures{0, 0, 14, 11}));
    EXPECT_EQ(&general.LargeBlockAllocator(source), &source);
}

TEST(WorkArrays, WithoutMemoryNothingChangesAndNoBlockIsKept) {
    Source source;
    source.refuse = true;
    KZMBasSrmDCAllocator none(source);
    EXPECT_EQ(none.registerVariable(1, 8, "a"), -1);
    EXPECT_EQ(none.allocTempInt(1), nullptr);
    EXPECT_EQ(FiguresOf(none), (Figures{0, 0, 0, 0}));
    EXPECT_EQ(Report(none), kHead + "\n");
    EXPECT_TRUE(source.freed.empty());
    source.refuse = false;

    struct Subject {
        Source source;
        KZMBasSrmDCAllocator arrays{source};
    };
    const auto check = [](Subject& subject, bool succeeded) {
        const Figures figures = FiguresOf(subject.arrays);
        const bool registered = figures[0] != 0;
        EXPECT_EQ(subject.source.asked.size() - subject.source.freed.size(),
                  (registered ? 1u : 0u) + (figures[2] ? 1u : 0u));
        EXPECT_EQ(subject.arrays.findVariable("matrix"), registered ? 0 : -1);
        EXPECT_EQ(succeeded, subject.arrays.findVariable("") == 5);
    };
    ForEveryAllocationFailure([] { return Subject(); },
                              [](Subject& subject) {
                                  subject.arrays.registerVariable(1, 8, "matrix");
                                  subject.arrays.allocTempData(8);
                                  subject.arrays.getVariable(5);
                              },
                              check);
}

}  // namespace
