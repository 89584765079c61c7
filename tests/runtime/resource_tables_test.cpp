#include <gtest/gtest.h>
#include <runtime/srm_ResourceConstData.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <tuple>

namespace {

using Tables = srm_ResourceConstData;
using Print = void (Tables::*)(std::FILE*, int) const;

std::string TextOf(const std::string& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The text, and whether printing it flushes what waits in another stream.
std::pair<std::string, bool> Printed(const Tables& tables, Print print) {
    const std::string names[] = {testing::TempDir() + "tables.txt",
                                 testing::TempDir() + "other.txt"};
    std::FILE* const file = std::fopen(names[0].c_str(), "w");
    std::FILE* const other = std::fopen(names[1].c_str(), "w");
    std::fputs("waiting", other);
    (tables.*print)(file, 0);
    const bool flushed = TextOf(names[1]) == "waiting";
    std::fclose(file);
    std::fclose(other);
    const std::string text = TextOf(names[0]);
    for (const std::string& name : names) std::remove(name.c_str());
    return {text, flushed};
}

std::string Numbered(std::string text, int n, const std::string& rest) {
    for (int i = 0; i < n; ++i)
        text += (i < 10 ? "  " : " ") + std::to_string(i) + ")" + rest + "\n";
    return text;
}

TEST(ResourceTables, AFreshRecordIsEmptyButForTheManagersData) {
    const auto memory = std::make_unique<unsigned char[]>(sizeof(Tables));
    std::memset(memory.get(), 0xAA, sizeof(Tables));
    const Tables& tables = *::new (memory.get()) Tables;
    for (const std::int32_t value : tables.m_resourceData) EXPECT_EQ(value, -0x55555556);
    EXPECT_EQ(tables.m_reserved, 0);
    const std::tuple<Print, std::string, bool> cases[] = {
        {&Tables::PrintPhases, Numbered("Phases:\n", 22, " "), true},
        {&Tables::PrintProcedures, Numbered("Procedures:\n", 6, " "), true},
        {&Tables::PrintPriorities, Numbered("Priorities:\n", 6, " "), true},
        {&Tables::PrintResources, Numbered("Resources:\n", 65, std::string(23, ' ') + "   0   0"),
         false}};
    for (const auto& [print, text, flushes] : cases)
        EXPECT_EQ(Printed(tables, print), (std::pair(text, flushes)));
}

TEST(ResourceTables, PrintWhatTheManagerFilledIn) {
    const auto tables = std::make_unique<Tables>();
    tables->m_purgeIdBase = 100;
    tables->LocalPurgeId()[3] = 7;
    tables->LocalPurgeId()[64] = 0x7FFFFFFF;
    EXPECT_EQ(tables->PurgeId(static_cast<srm_ResourceEnums>(3)), 107);
    EXPECT_EQ(tables->PurgeId(srm_LastResource), -0x7FFFFFFF - 1 + 99);
    std::strcpy(tables->m_resourceNames[3], "X");
    EXPECT_EQ(Printed(*tables, &Tables::PrintResources).first.substr(11 + 3 * 36, 36),
              "  3) X" + std::string(21, ' ') + "   7 107\n");

    std::strcpy(tables->m_procedureNames[0], "P");
    std::strcpy(tables->m_phaseNames[2], "Q");
    std::strcpy(tables->m_resourceNames[64], "100%d");  // a name is no format
    for (int id = 0; id < 45; ++id) {
        tables->m_resourceOfPurgeId[id] = id == 4 ? 64 : 3;
        tables->m_purgeables[0][2][1] = 4;
        tables->m_purgeables[5][21][1 + id] = id;
    }
    tables->m_purgeables[0][2][0] = 1;
    tables->m_purgeables[5][21][0] = 45;
    std::string expected =
        "Priorities:\n  0) P\n     phase 2 Q: 1 purgeables:\n               4 100%d\n\n"
        "  1) \n  2) \n  3) \n  4) \n  5) \n     phase 21 : 45 purgeables:\n";
    for (int id = 0; id < 45; ++id)
        expected += (id < 10 ? "               " : "              ") + std::to_string(id) +
                    (id == 4 ? " 100%d\n" : " X\n");
    EXPECT_EQ(Printed(*tables, &Tables::PrintPriorities).first, expected + "\n");
}

}  // namespace
