#include <coreutils/aio_ostream.h>
#include <coreutils/atr_format.h>
#include <coreutils/atr_naturalOrder.h>
#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <string>
#include <vector>

namespace {

TEST(NaturalOrder, NumbersCompareByValueAndTheRestByBytes) {
    std::vector<std::string> ascending{""};
    std::istringstream words(
        "01 1 2 10 9999999999999999999999 10000000000000000000000 a a- a0 a00 a01 a1 a1b a2 a10 aa "
        "\x80");
    for (std::string word; words >> word;) ascending.push_back(word);
    for (std::size_t i = 0; i < ascending.size(); ++i)
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            const int order = strnatcmp(ascending[i].c_str(), ascending[j].c_str());
            EXPECT_EQ((order > 0) - (order < 0), (i > j) - (i < j)) << i << " against " << j;
        }
    EXPECT_EQ(strnatcmp(nullptr, ""), 0);
}

TEST(Format, ArgumentsKeepTheirTypeAndDirectivesWithoutOneStay) {
    const std::pair<atr_String, const char*> cases[] = {
        {atr_format("ID %n and %s", 7, -3), "ID 7 and -3"},
        {atr_format("%d%%, %lld %%s", "text", LLONG_MIN), "text%, -9223372036854775808 %s"},
        {atr_format("%u %c %g %f %i", ULLONG_MAX, 'x', 0.1F, 0.1, true),
         "18446744073709551615 x 0.1 0.1 true"},
        {atr_format("%dmm %g", 5, 0.5L), "5mm 0.5"},
        {atr_format("%p", reinterpret_cast<const void*>(0xBAD1)), "0xbad1"},
        {atr_format("<%s>", static_cast<const char*>(nullptr)), "<>"},
        {atr_format("%s", atr_String("%s%n")), "%s%n"},
        {atr_format("%s %s %n", "one"), "one %s %n"},
        {atr_format("50% of %"), "50% of %"},
        {atr_format("none", 1, 2), "none"},
        {atr_format("%h", 1), "%h"},
        {atr_format(nullptr, 1), ""}};
    for (const auto& [formatted, expected] : cases) EXPECT_EQ(formatted, expected);
    testing::internal::CaptureStdout();
    atr_print(stdout, "%s.", std::string_view("a\0b", 3));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string("a\0b.", 4));
}

TEST(Format, OnlyTextsForTheUserAreTranslated) {
    atr_setTranslator([](const char* text) { return *text == 'E' ? "Erreur : %s" : nullptr; });
    EXPECT_EQ(atr(KZMBasStringModeUser, "Error: %s", 1), "Erreur : 1");
    EXPECT_EQ(atr(KZMBasStringModeUser, "100%"), "100%");
    EXPECT_EQ(atr(KZMBasStringModeDeveloper, "Error: %s", 1), "Error: 1");
    atr_setTranslator(nullptr);
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
    EXPECT_FALSE(aio_ostream(static_cast<std::FILE*>(nullptr)).print("lost").good());
}

}  // namespace
