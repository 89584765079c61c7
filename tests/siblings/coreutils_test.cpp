#include <coreutils/aio_ostream.h>
#include <coreutils/atr_format.h>
#include <coreutils/atr_naturalOrder.h>
#include <generics/KZMBasTree.h>
#include <support/memory_failure.h>

#include <string>

namespace {

TEST(NaturalOrder, NumbersCompareByValueAndTheRestByBytes) {
    const char* const ascending[] = {"",    "01",  "1",  "2",   "10", "a",   "a-", "a0",
                                     "a00", "a01", "a1", "a1b", "a2", "a10", "aa", "\x80"};
    for (const auto& a : ascending)
        for (const auto& b : ascending)
            EXPECT_EQ(strnatcmp(a, b), (&a > &b) - (&a < &b)) << a << " against " << b;
    EXPECT_EQ(strnatcmp("9999999999999999999999", "10000000000000000000000"), -1);
    EXPECT_EQ(strnatcmp(nullptr, ""), 0);
}

TEST_WITH_REFUSALS(Format, ArgumentsKeepTheirTypeAndDirectivesWithoutOneStay) {
    const std::pair<atr_String, const char*> cases[] = {
        {atr_format("ID %n, %s <%s>", 7, -3, static_cast<const char*>(nullptr)), "ID 7, -3 <>"},
        {atr_format("%d%%, %lld %%s", "text", INT64_MIN), "text%, -9223372036854775808 %s"},
        {atr_format("%u %c %g %f %i", UINT64_MAX, 'x', 0.1F, 0.1, true),
         "18446744073709551615 x 0.1 0.1 true"},
        {atr_format("%X %Z", 1, 2), "1 2"},
        {atr_format("%p", reinterpret_cast<const void*>(0xBAD1)), "0xbad1"},
        {atr_format("%s %s %n", atr_String("%s%n")), "%s%n %s %n"},
        {atr_format("50% of %h %", 1), "50% of %h %"},
        {atr_format(nullptr, 1), ""}};
    for (const auto& [formatted, expected] : cases) EXPECT_EQ(formatted, expected);
}

TEST(Format, OnlyTextsForTheUserAreTranslatedAndPrintingKeepsZeroBytes) {
    atr_setTranslator([](const char* text) { return *text == 'E' ? "Erreur : %s" : nullptr; });
    EXPECT_EQ(atr(KZMBasStringModeUser, "Error: %s", 1), "Erreur : 1");
    EXPECT_EQ(atr(KZMBasStringModeUser, "100%"), "100%");
    EXPECT_EQ(atr(KZMBasStringModeDeveloper, "Error: %s", 1), "Error: 1");
    atr_setTranslator(nullptr);
    testing::internal::CaptureStdout();
    atr_print(stdout, "%s.", std::string_view("a\0b", 3));
    EXPECT_TRUE(aio_ostream(stdout).print("!").good());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string("a\0b.!", 5));
}

int g_comparisons = 0;
struct CountingLess {
    bool operator()(int a, int b) const { return ++g_comparisons, a < b; }
};

TEST(Tree, FindsInFewStepsWhateverCameAndWentInWhichOrder) {
    for (const int step : {1, 999, 501}) {  // up, down, to and fro
        KZMBasTree<int, int, CountingLess> tree;
        for (int i = 0; i < 1000; ++i) tree.Add(i * step % 1000, i);
        for (int i = 0; i < 500; ++i) tree.Remove(i);
        for (int i = 500; i < 1000; ++i) {
            g_comparisons = 0;
            EXPECT_TRUE(tree.Find(i) && g_comparisons <= 24) << step << ' ' << i;
        }
    }
}

TEST(OutputStream, WidthHoldsForOneItemAndPadsOnTheLeft) {
    std::string text;
    aio_ostream os(text);
    const char* const nothing = nullptr;
    aio_setwidth(os, 5).print("ab").print("cd").aio_setwidth(4).print_int(-12).print(nothing);
    os.print_u_int64(UINT64_MAX).aio_setwidth(2).print("long").aio_setwidth(20).put('|');
    os.print(atr_String("x")).aio_setwidth(-3).print_double(2.5).flush().flush();
    EXPECT_EQ(text, "   abcd -1218446744073709551615long|                   x2.5");
    EXPECT_TRUE(os.good() && os.flush_count() == 2);
    EXPECT_FALSE(aio_ostream(static_cast<std::FILE*>(nullptr)).print("lost").good());
}

}  // namespace
