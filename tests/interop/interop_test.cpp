#include <alloc/KZMBasMemSmallBlockAllocator.h>
#include <interop/cow_error_code.h>
#include <interop/cow_span.h>
#include <interop/cow_stream.h>
#include <interop/mem_resources.h>
#include <interop/omi_span.h>
#include <runtime/KZMBasSrmAllocator.h>
#include <runtime/KZMBasSrmDCAllocator.h>
#include <runtime/KZMBasWorkArray.h>
#include <support/memory_failure.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory_resource>
#include <numeric>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

TEST_WITH_REFUSALS(Spans, ArraysAreReadInPlaceAndDetachForWriting) {
    cow_FixedArray<int> array(3, 7), none;
    cow_2DArray<int> plane(2, 3, 1), flat;
    const cow_FixedArray<int> arrayBefore(array);
    const cow_2DArray<int> planeBefore(plane);
    EXPECT_EQ(cow_ConstSpan(array).data(), arrayBefore.begin());
    EXPECT_EQ(cow_ConstRow(plane, 1).data(), planeBefore.begin() + 3);

    cow_WritableSpan(array)[2] = 9;
    cow_WritableRow(plane, 1)[0] = 5;
    EXPECT_TRUE(array.ConstGet(2) == 9 && plane.ConstGet(1, 0) == 5);
    EXPECT_TRUE(arrayBefore.ConstGet(2) == 7 && planeBefore.ConstGet(1, 0) == 1);
    EXPECT_TRUE(cow_WritableSpan(none).empty() && cow_WritableSpan(flat).empty());
    EXPECT_EQ(cow_WritableSpan(plane).size(), 6u);
}

TEST(Spans, RunsOfAListHaveItsElementsInOrder) {
    for (const int length : {0, 1, 16, 17, 100}) {
        SCOPED_TRACE(length);
        cow_List<int> list;
        for (int i = 1; i < length; ++i) list.Append(i);
        if (length > 0) list.Prepend(0);  // so that the first run does not begin its block
        const cow_List<int> before(list);
        std::vector<int> seen;
        for (const std::span<const int> run : cow_ConstRuns(before))
            seen.insert(seen.end(), run.begin(), run.end());
        EXPECT_TRUE(std::equal(list.begin(), list.end(), seen.begin(), seen.end()));

        for (const std::span<int> run : cow_WritableRuns(list))
            for (int& element : run) element *= 2;
        for (int i = 0; i < length; ++i)
            EXPECT_TRUE(list.ConstGet(i) == 2 * i && before.ConstGet(i) == i) << i;
    }
}

template <class Runs>
auto Shape(const Runs& runs) {
    std::vector<std::pair<std::int64_t, std::size_t>> shape;
    for (const auto& [first, values] : runs) shape.emplace_back(first, values.size());
    return shape;
}
using Shapes = std::vector<std::pair<std::int64_t, std::size_t>>;

TEST_WITH_REFUSALS(Spans, RunsOfSparseStorageSkipWhatIsAbsent) {
    omi_BlockedArray<int> blocked(4, 2);
    blocked.SetCell(5, 50);
    blocked.SetCell(14, 60);
    EXPECT_EQ(Shape(omi_ConstRuns(blocked)), (Shapes{{4, 4}, {12, 4}}));
    omi_WritableRuns(blocked).begin()->values[1] = 51;
    EXPECT_EQ(*blocked.GetCell(5), 51);
    const omi_BlockedArray<int> nothing(0, 3);
    EXPECT_EQ(Shape(omi_ConstRuns(nothing)), Shapes{});
}

TEST(Spans, RunsOfTablesHaveSuccessiveKeys) {
    omi_IntTable<double, KZMBasOmiDefaultAllocator> table;
    omi_UintTable<double, KZMBasOmiDefaultAllocator> dense;
    EXPECT_EQ(Shape(omi_ConstRuns(table)), Shapes{});
    for (const int key : {-3, -2, 0, 1, 2, 7, INT_MIN, INT_MAX}) table.Insert(key, key);
    for (unsigned key = 0; key < 5000; ++key) dense.Insert(key, key);
    EXPECT_EQ(Shape(omi_ConstRuns(table)),
              (Shapes{{INT_MIN, 1}, {-3, 1}, {-2, 1}, {0, 3}, {7, 1}, {INT_MAX, 1}}));
    for (const auto& run : omi_WritableRuns(table))
        for (double& value : run.values) value /= 2;
    EXPECT_EQ(table.ConstGet(7), 3.5);
    EXPECT_EQ(Shape(omi_ConstRuns(dense)),
              (Shapes{{0, 1024}, {1024, 1024}, {2048, 1024}, {3072, 1024}, {4096, 904}}));
}

template <class Resource>
void FillContainers(Resource& resource) {
    std::pmr::map<int, std::pmr::string> map(&resource);
    for (int i = 0; i < 100; ++i) map[i] = std::string(static_cast<std::size_t>(i), 'x');
    for (const std::size_t size : {0u, 1u, 12u, 24u, 1000u})
        for (const std::size_t alignment : {1u, 4u, 8u, 16u, 64u, 4096u}) {
            void* const block = resource.allocate(size, alignment);
            EXPECT_NE(block, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u) << size;
            std::memset(block, 1, size);
            resource.deallocate(block, size, alignment);
        }
    if (sizeof(std::size_t) > 4) {
        EXPECT_THROW((void)resource.allocate(SIZE_MAX / 4), std::bad_alloc);
    }
}

TEST_WITH_REFUSALS(Resources, ContainersTakeTheirMemoryFromPoliciesPoolsAndAllocators) {
    using Policy = KZMBasSrmAllocator<9>;
    KZMBasCamPool pool("ninth");
    mem_PolicyResource<Policy> policy;
    mem_PolicyResource<KZMBasMemSmallBlockAllocator> smallBlocks;
    mem_PoolResource direct(pool);
    KZMBasHeapAllocator heap;
    KZMBasSrmDCAllocator arrays(heap);
    mem_AllocatorResource temporary(arrays);
    Policy::SetPool(&pool);
    FillContainers(policy);
    const auto requests = pool.Requests();
    EXPECT_GT(requests, 100u);
    FillContainers(direct);
    EXPECT_TRUE(pool.Requests() == 2 * requests && pool.Blocks() == 0);
    Policy::Finalize();
    FillContainers(smallBlocks);
    void* const zeros = KZMBasMemSmallBlockAllocator::allocate(24);
    EXPECT_EQ(std::string_view(static_cast<char*>(zeros), 24), std::string(24, '\0'));
    KZMBasMemSmallBlockAllocator::deallocate(zeros);
    FillContainers(temporary);
    EXPECT_GT(arrays.tempBytesAllocated(), 0u);
    EXPECT_EQ(arrays.tempBytesAllocated(), arrays.tempBytesFreed());

    EXPECT_TRUE(policy.is_equal(mem_PolicyResource<Policy>()));
    EXPECT_TRUE(direct.is_equal(mem_PoolResource(pool)));
    EXPECT_TRUE(temporary.is_equal(mem_AllocatorResource(arrays)));
    EXPECT_FALSE(policy.is_equal(smallBlocks) || direct.is_equal(policy));
    EXPECT_EQ(mem_ResourcePool(policy).Free(nullptr) + pool.Free(nullptr), 0u);
}

TEST_WITH_REFUSALS(Resources, AWorkArrayIsListedUntilItEnds) {
    KZMBasHeapAllocator heap;
    KZMBasSrmDCAllocator arrays(heap);
    KZMBasWorkArray<double> kept;
    {
        KZMBasWorkArray<double> array(arrays, "residual", 3);
        array[2] = 5;
        kept = std::move(array);
    }
    EXPECT_EQ(arrays.getVariable(arrays.findVariable("residual")), kept.Data());
    EXPECT_EQ(kept[0] + kept[1] + kept[2], 5);
    kept = {};
    EXPECT_EQ(arrays.findVariable("residual"), -1);
    EXPECT_THROW(KZMBasWorkArray<double>(arrays, "large", UINT_MAX), std::bad_alloc);
}

TEST(ErrorCodes, ConvertThereAndBack) {
    const cow_SystemErrorCode codes[] = {{omi_SystemErrorCode::CLibraryError, ENOENT},
                                         {omi_SystemErrorCode::SystemError, 5}};
    for (const cow_SystemErrorCode& code : codes) {
        const std::error_code converted = cow_ErrorCode(code);
        EXPECT_TRUE(converted.value() == code.GetDetail() &&
                    cow_SystemErrorCodeOf(converted) == code);
    }
    EXPECT_EQ(cow_ErrorCode(codes[0]), std::errc::no_such_file_or_directory);
    EXPECT_EQ(cow_ErrorCode(KZMBasSystemError(5)), cow_ErrorCode(codes[1]));
    const cow_SystemErrorCode nothing = cow_SystemErrorCodeOf({});
    EXPECT_TRUE(nothing.GetDetail() == -1 && !cow_ErrorCode(nothing));
    EXPECT_EQ(cow_SystemErrorCodeOf(std::make_error_code(std::io_errc::stream)), nothing);
}

TEST_WITH_REFUSALS(Streams, TextsAreReadByWordAndLine) {
    std::istringstream in("  node 12\nsecond line\n");
    cow_String word, number, rest("old"), line;
    in >> word >> number;
    EXPECT_TRUE(word == "node" && number == "12");
    cow_GetLine(cow_GetLine(in, rest), line);
    EXPECT_TRUE(rest == "" && line == "second line");
    EXPECT_TRUE(!(in >> word) && word.Length() == 0);
}

TEST_WITH_REFUSALS(Streams, AnOstreamWritesToTheProductsOwn) {
    std::string collected;
    const std::string zeros("a\0\0b", 4), longText(1000, 'x');
    {
        aio_ostream target(collected);
        aio_streambuf buffer(target);
        std::ostream out(&buffer);
        out << "n = " << 12 << std::flush;
        EXPECT_TRUE(collected == "n = 12" && target.flush_count() == 1);
        out << zeros << longText << '!';
    }
    EXPECT_EQ(collected, "n = 12" + zeros + longText + '!');

    aio_ostream nowhere(static_cast<std::FILE*>(nullptr));
    aio_streambuf buffer(nowhere);
    std::ostream out(&buffer);
    EXPECT_FALSE(out << longText << std::flush);
}

}  // namespace
