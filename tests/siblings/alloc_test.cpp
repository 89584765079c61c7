#include <alloc/KZMBasAlloc.h>
#include <alloc/mem_alloc.h>
#include <alloc/mem_cell.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

namespace {

// Starts the library, which nobody else does here, for the length of a test.
struct RunningAlloc {
    RunningAlloc() { KZMBasAlloc_initialize(m_count); }
    ~RunningAlloc() { KZMBasAlloc_finalize(m_count); }
    int m_count = 0;
};

TEST(Heap, ZeroBytesAreNoExhaustionWhichThrowsAndKeepsTheBlock) {
    const RunningAlloc running;
    for (const auto take : {mem_Malloc, mem_OperatorNewThrow, mem_OperatorNewTinyThrow})
        mem_Free(take(0));
    char* const block = std::strcpy(static_cast<char*>(mem_Malloc(16)), "kept");
    EXPECT_THROW(mem_Realloc(block, SIZE_MAX), std::bad_alloc);
    EXPECT_THROW(mem_Malloc(SIZE_MAX), std::bad_alloc);
    void* moved = block;
    for (const std::size_t size : {512, 1024, 8192, 40, 2048, 600}) {
        moved = mem_Realloc(moved, size);
        EXPECT_STREQ(static_cast<char*>(moved), "kept") << size;
    }
    EXPECT_EQ(mem_Realloc(moved, 0), nullptr);
}

// Aligned blocks whose bytes all tell their size; beyond 200 stand 1, 2, 4 .. KiB.
unsigned BytesOf(unsigned size) { return size <= 200 ? size : 1024U << (size - 201); }
unsigned char* Take(unsigned size) {
    const unsigned bytes = BytesOf(size);
    void* const block = mem_OperatorNewTinyThrow(bytes);
    const unsigned most = size <= 200 ? 16 : 8;  // the C library's on Windows
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % std::min(bytes & (0U - bytes), most), 0U);
    return static_cast<unsigned char*>(std::memset(block, static_cast<int>(size), bytes));
}
bool Intact(const unsigned char* block, unsigned size) {
    return std::count(block, block + BytesOf(size), size) == static_cast<long>(BytesOf(size));
}

std::size_t Committed() { return host_heap::SmallState().committedBytes; }

TEST(TinyBlocks, CostLittleMoreThanTheirSizeAndMayGrow) {
    const RunningAlloc running;
    for (unsigned size = 1; size <= 40; ++size) {
        const std::size_t before = Committed();
        std::vector<unsigned char*> blocks(20000);
        for (unsigned char*& each : blocks) each = Take(size);
        EXPECT_LE(Committed() - before, (size + 3) / 4 * 100000 + 65536U);
        for (unsigned char*& each : blocks) {
            each = static_cast<unsigned char*>(mem_Realloc(each, size + 8));
            ASSERT_TRUE(Intact(each, size)) << size;
            mem_Free(each);
        }
    }
    for (const mem_CellKind kind : {kMemCellOfThree, kMemCellOfTwo}) {
        auto* const cell = static_cast<unsigned char*>(mem_TakeCell(kind));
        if (!cell) continue;  // not where clients are built for debugging
        auto* const grown = static_cast<unsigned char*>(mem_Realloc(std::memset(cell, 16, 16), 24));
        EXPECT_TRUE(grown != cell && Intact(grown, 16));
        for (unsigned char* const each : {grown, cell + 16}) mem_Free(each);
        if (kind == kMemCellOfThree) mem_Free(cell + 24);
    }
}

TEST(TinyBlocks, GiveTheirMemoryBackToOtherSizesAndToTheSystem) {
    const RunningAlloc running;
    std::vector<void*> blocks(100000);
    std::vector<std::size_t> committed;
    for (const std::size_t size : {1024, 32}) {
        for (void*& each : blocks) each = mem_Malloc(size);
        committed.push_back(Committed());
        for (std::size_t i = 0; i < blocks.size(); i += 2) mem_Free(blocks[i]);
        for (std::size_t i = 0; i < blocks.size(); i += 2) blocks[i] = mem_Malloc(size);
        EXPECT_EQ(Committed(), committed.back());
        for (void* const each : blocks) mem_Free(each);
        committed.push_back(Committed());
    }
    EXPECT_GE(committed[0], host_heap::SmallState().inUse ? blocks.size() * 1024 : 0);
    EXPECT_LE(committed[1], committed[0] / 4 * 3);
    EXPECT_EQ(committed[2], committed[1]);
}

// Threads hand blocks to each other through common slots and free what others took.
TEST(TinyBlocks, MayBeFreedByAnyThreadAndAfterTheStop) {
    for (int cycle = 0; cycle < 3; ++cycle) {
        std::vector<std::atomic<unsigned char*>> slots(512);
        const auto work = [&](unsigned seed) {
            std::minstd_rand rng(seed);
            const auto exchange = [&](unsigned char* fresh) {
                unsigned char* const taken = slots[rng() % slots.size()].exchange(fresh);
                EXPECT_TRUE(!taken || Intact(taken, taken[0]));
                mem_Free(taken);
            };
            for (int i = 0; i < 60000; ++i) {
                exchange(Take(static_cast<unsigned>(rng() % 205 + 1)));
                const mem_CellKind kind = rng() % 2 ? kMemCellOfThree : kMemCellOfTwo;
                auto* const cell = static_cast<unsigned char*>(mem_TakeCell(kind));
                if (cell && rng() % 4 == 0)
                    mem_FreeCell(cell, kind);
                else if (cell)
                    for (const auto& [at, three, two] :
                         {std::array{0, 16, 16}, {16, 4, 48}, {24, 40, 0}})
                        if (const int size = kind == kMemCellOfThree ? three : two)
                            exchange(
                                static_cast<unsigned char*>(std::memset(cell + at, size, size)));
            }
        };
        {
            const RunningAlloc running;
            std::vector<std::jthread> threads;
            for (unsigned seed = 1; seed <= 6; ++seed) threads.emplace_back(work, seed);
        }
        unsigned char* const last = slots[0].exchange(nullptr);
        for (auto& slot : slots) mem_Free(slot);
        EXPECT_TRUE(Intact(last, last[0]));
        const host_heap::SmallFigures state = host_heap::SmallState();
        EXPECT_TRUE(state.blocksOut == state.inUse && state.reserved == state.inUse);
        mem_Free(last);
        EXPECT_FALSE(host_heap::SmallState().reserved);
    }
}

// On Linux the child is a copy of this process without the thread, which has the heap's lock
// mostly.
TEST(TinyBlocks, ServeAChildProcessThatBeginsWhileThreadsWork) {
    const RunningAlloc running;
    std::vector<void*> blocks(100000);
    const auto work = [&blocks] {
        for (void*& each : blocks) each = mem_Malloc(500);
        for (void* const each : blocks) mem_Free(each);
    };
    work();
    const std::jthread busy([](const std::stop_token& stop) {
        while (!stop.stop_requested()) host_heap::SmallState();
    });
    const auto end = [&work] {
        work();
        std::_Exit(5);
    };
    for (int i = 0; i < 5; ++i) EXPECT_EXIT(end(), testing::ExitedWithCode(5), "");
}

TEST(TinyBlocks, ComeFromTheHeapWhenThereAreNoAddresses) {
    host_heap::RefuseRegion(true);
    const RunningAlloc running;
    mem_Free(Take(4));
    EXPECT_FALSE(host_heap::SmallState().reserved);
    host_heap::RefuseRegion(false);
}

}  // namespace
