#include <coreutils/KZMBasAtiGlobalLock.h>
#include <coreutils/KZMBasAtiThreadingModel.h>
#include <coreutils/KZMBasAtiThreadingModelHook.h>
#include <coreutils/KZMBasCamPool.h>
#include <coreutils/KZMBasException.h>
#include <coreutils/KZMBasSystemError.h>
#include <coreutils/aio_ostream.h>
#include <coreutils/atr_format.h>
#include <coreutils/atr_naturalOrder.h>
#include <gtest/gtest.h>
#include <support/memory_failure.h>

#include <climits>
#include <cstring>
#include <memory>
#include <thread>

namespace {

TEST(NaturalOrder, NumbersCompareByValueAndTheRestByBytes) {
    const char* const ascending[] = {"",
                                     "01",
                                     "1",
                                     "2",
                                     "10",
                                     "9999999999999999999999",
                                     "10000000000000000000000",
                                     "a",
                                     "a-",
                                     "a0",
                                     "a00",
                                     "a01",
                                     "a1",
                                     "a1b",
                                     "a2",
                                     "a10",
                                     "aa",
                                     "\x80"};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            const int order = strnatcmp(ascending[i], ascending[j]);
            EXPECT_EQ((order > 0) - (order < 0), (i > j) - (i < j))
                << ascending[i] << " against " << ascending[j];
        }
    }
    EXPECT_EQ(strnatcmp(nullptr, ""), 0);
}

TEST(Format, ArgumentsKeepTheirTypeWhateverTheDirectiveSays) {
    EXPECT_EQ(atr_format("ID %n and %s", 7, -3), "ID 7 and -3");
    EXPECT_EQ(atr_format("%d%%, %lld %%s", "text", LLONG_MIN), "text%, -9223372036854775808 %s");
    EXPECT_EQ(atr_format("%u %c %g %f %i", ULLONG_MAX, 'x', 0.1F, 0.1, true),
              "18446744073709551615 x 0.1 0.1 true");
    EXPECT_EQ(atr_format("%dmm", 5), "5mm");
    EXPECT_EQ(atr_format("%p", reinterpret_cast<const void*>(0xBAD1)), "0xbad1");
    EXPECT_EQ(atr_format("<%s>", static_cast<const char*>(nullptr)), "<>");
    EXPECT_EQ(atr_format("%s", atr_String("%s%n")), "%s%n");
}

TEST(Format, DirectivesWithoutArgumentAndLonePercentSignsStay) {
    EXPECT_EQ(atr_format("%s %s %n", "one"), "one %s %n");
    EXPECT_EQ(atr_format("50% of %"), "50% of %");
    EXPECT_EQ(atr_format("none", 1, 2), "none");
    EXPECT_EQ(atr_format("%h", 1), "%h");
    EXPECT_EQ(atr_format(nullptr, 1), "");
}

TEST(Format, OnlyTextsForTheUserAreTranslated) {
    atr_setTranslator([](const char* text) -> const char* {
        return std::strcmp(text, "Error: %s") == 0 ? "Erreur : %s" : nullptr;
    });
    EXPECT_EQ(atr(KZMBasStringModeUser, "Error: %s", 1), "Erreur : 1");
    EXPECT_EQ(atr(KZMBasStringModeDeveloper, "Error: %s", 1), "Error: 1");
    EXPECT_EQ(atr("100%"), "100%");
    atr_setTranslator(nullptr);
    EXPECT_EQ(atr(KZMBasStringModeUser, "Error: %s", 1), "Error: 1");
}

TEST(OutputStream, WidthHoldsForOneItemAndPadsOnTheLeft) {
    std::string text;
    aio_ostream os(text);
    aio_setwidth(os, 5).print("ab");
    os.print("cd").aio_setwidth(4).print_int(-12).print_u_int64(UINT64_MAX).put('\n');
    os.aio_setwidth(2).print("long").aio_setwidth(20).put('|').print(atr_String("x"));
    os.aio_setwidth(-3).print_double(2.5).print(static_cast<const char*>(nullptr)).flush().flush();
    EXPECT_EQ(text, "   abcd -1218446744073709551615\nlong|                   x2.5");
    EXPECT_EQ(os.flush_count(), 2U);
    EXPECT_TRUE(os.good());
}

TEST(OutputStream, WritesToAnOpenFile) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), &std::fclose);
    ASSERT_TRUE(file);
    aio_ostream(file.get()).print("line").put('\n').flush();
    std::rewind(file.get());
    char read[16] = {};
    EXPECT_STREQ(std::fgets(read, sizeof read, file.get()), "line\n");
}

class DiskFull : public KZMBasException {
public:
    explicit DiskFull(int disk) : m_disk(disk) {}
    atr_String AsString(KZMBasStringMode mode) const override {
        return atr(mode, "Disk %d is full", m_disk);
    }
    void Propagate() const override { throw *this; }
    KZMBasException* Clone() const override { return new DiskFull(*this); }
    int GetCode() const override { return 42; }
    int m_disk;
};

TEST(Exception, ThrowKeepsTheClassAndTellsTheSite) {
    const std::unique_ptr<KZMBasException> held(DiskFull(3).Clone());
    EXPECT_STREQ(held->ThrownFile(), "");
    try {
        held->Throw("source.cpp", 17);
    } catch (const DiskFull& e) {
        EXPECT_EQ(e.m_disk, 3);
        EXPECT_EQ(e.UserReport(KZMBasStringModeUser), "Disk 3 is full");
        EXPECT_EQ(e.DeveloperReport(KZMBasStringModeDeveloper),
                  "Disk 3 is full (code 42, thrown at source.cpp:17)");
    }
}

TEST(SystemError, CopiesKeepTheSystemsTextOnOneLine) {
    auto error = std::make_unique<KZMBasSystemError>(2);  // no such file, on every system
    const KZMBasSystemError copy(*error);
    error.reset();
    EXPECT_EQ(copy.Number(), 2);
    EXPECT_GT(std::strlen(copy.AsString()), 5U);
    EXPECT_EQ(std::strpbrk(copy.AsString(), "\r\n"), nullptr);
    EXPECT_STRNE(copy.AsString(), KZMBasSystemError(3).AsString());
    EXPECT_NE(std::string(KZMBasSystemError(123456789).AsString()).find("123456789"),
              std::string::npos);
}

TEST(Locks, AreRecursiveAndKeepOtherThreadsOut) {
    const std::unique_ptr<KZMBasAtiMutex> mutex(KZMBasAtiThreadingModel::newMutex());
    long counts[2] = {0, 0};
    const auto work = [&] {
        for (int i = 0; i < 20000; ++i) {
            mutex->Lock();
            mutex->Lock();
            ++counts[0];
            mutex->Unlock();
            mutex->Unlock();
            const KZMBasAtiGlobalLock outer;
            const KZMBasAtiGlobalLock inner;
            ++counts[1];
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(counts[0], 40000);
    EXPECT_EQ(counts[1], 40000);
}

TEST(Locks, TheSourceOfMutexesCanBeReplaced) {
    KZMBasAtiSetMutexFactory([]() -> KZMBasAtiMutex* { return nullptr; });
    EXPECT_EQ(KZMBasAtiThreadingModel::newMutex(), nullptr);
    KZMBasAtiSetMutexFactory(nullptr);
    ForEveryAllocationFailure(
        [] { return std::unique_ptr<KZMBasAtiMutex>(); },
        [](auto& mutex) { mutex.reset(KZMBasAtiThreadingModel::newMutex()); },
        [](const auto& mutex, bool made) { EXPECT_EQ(mutex != nullptr, made); });
}

TEST(Pool, CountsWhatIsAliveAndReportsSizesOnFree) {
    KZMBasCamPool pool("mesh");
    void* const a = pool.Alloc(100);
    void* const b = pool.Alloc(0);
    EXPECT_NE(b, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(a) % alignof(std::max_align_t), 0U);
    EXPECT_EQ(pool.BytesInUse(), 100U);
    EXPECT_EQ(pool.Blocks(), 2U);
    EXPECT_EQ(pool.Free(a), 100U);
    EXPECT_EQ(pool.Free(nullptr), 0U);
    EXPECT_EQ(pool.Free(b), 0U);
    EXPECT_EQ(pool.BytesInUse(), 0U);
    EXPECT_EQ(pool.PeakBytes(), 100U);
    EXPECT_EQ(pool.Blocks(), 0U);
    EXPECT_EQ(pool.Requests(), 2U);
    EXPECT_STREQ(pool.Name(), "mesh");
}

}  // namespace
