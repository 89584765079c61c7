#include <gtest/gtest.h>
#include <runtime/srm_ResourceConstData.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <string>

namespace {

using Tables = srm_ResourceConstData;
using Print = void (Tables::*)(std::FILE*, int) const;

std::string TextOf(const std::string& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string Printed(const Tables& tables, Print print) {
    const std::string name = testing::TempDir() + "resource_tables.txt";
    std::FILE* const file = std::fopen(name.c_str(), "w");
    (tables.*print)(file, 0);
    std::fclose(file);
    const std::string text = TextOf(name);
    std::remove(name.c_str());
    return text;
}

std::string Numbered(const std::string& title, int n, const std::string& rest) {
    std::string text = title + "\n";
    for (int i = 0; i < n; ++i)
        text += (i < 10 ? "  " : " ") + std::to_string(i) + ") " + rest + "\n";
    return text;
}

TEST(ResourceTables, AFreshRecordIsEmptyButForTheManagersData) {
    const auto memory = std::make_unique<unsigned char[]>(sizeof(Tables));
    std::memset(memory.get(), 0xAA, sizeof(Tables));
    Tables& tables = *::new (memory.get()) Tables;
    EXPECT_TRUE(std::all_of(std::begin(tables.m_resourceData), std::end(tables.m_resourceData),
                            [](std::int32_t value) { return value == -0x55555556; }));
    EXPECT_EQ(tables.m_reserved, 0);
    EXPECT_EQ(Printed(tables, &Tables::PrintPhases), Numbered("Phases:", 22, ""));
    EXPECT_EQ(Printed(tables, &Tables::PrintProcedures), Numbered("Procedures:", 6, ""));
    EXPECT_EQ(Printed(tables, &Tables::PrintPriorities), Numbered("Priorities:", 6, ""));
    EXPECT_EQ(Printed(tables, &Tables::PrintResources),
              Numbered("Resources:", 65, std::string(22, ' ') + "   0   0"));
}

TEST(ResourceTables, PrintWhatTheManagerFilledIn) {
    const auto tables = std::make_unique<Tables>();
    tables->m_purgeIdBase = 100;
    tables->LocalPurgeId()[3] = 7;
    std::strcpy(tables->m_resourceNames[3], "X");
    EXPECT_EQ(tables->PurgeId(static_cast<srm_ResourceEnums>(3)), 107);
    EXPECT_EQ(Printed(*tables, &Tables::PrintResources).substr(11 + 3 * 36, 36),
              "  3) X" + std::string(21, ' ') + "   7 107\n");
    tables->LocalPurgeId()[64] = 0x7FFFFFFF;
    EXPECT_EQ(tables->PurgeId(srm_LastResource), -0x7FFFFFFF - 1 + 99);

    std::strcpy(tables->m_procedureNames[0], "P");
    std::strcpy(tables->m_phaseNames[2], "Q");
    std::strcpy(tables->m_resourceNames[64], "100%d");  // a name is no format
    tables->m_resourceOfPurgeId[4] = 64;
    tables->m_purgeables[0][2][0] = 1;
    tables->m_purgeables[0][2][1] = 4;
    tables->m_purgeables[5][21][0] = 45;
    for (int id = 0; id < 45; ++id) tables->m_purgeables[5][21][1 + id] = id;
    tables->m_resourceOfPurgeId[44] = 3;
    std::string expected = Numbered("Priorities:", 6, "");
    expected.insert(expected.find("0) ") + 3, "P");
    expected.insert(expected.find("  1)"),
                    "     phase 2 Q: 1 purgeables:\n               4 100%d\n\n");
    expected += "     phase 21 : 45 purgeables:\n";
    for (int id = 0; id < 45; ++id)
        expected += std::string(id < 10 ? 15 : 14, ' ') + std::to_string(id) +
                    (id == 4    ? " 100%d\n"
                     : id == 44 ? " X\n"
                                : " \n");
    EXPECT_EQ(Printed(*tables, &Tables::PrintPriorities), expected + "\n");
}

TEST(ResourceTables, AllPrintersButThatOfTheResourcesFlushEveryStream) {
    const auto tables = std::make_unique<Tables>();
    const std::string other = testing::TempDir() + "other_stream.txt";
    const std::pair<Print, bool> cases[] = {{&Tables::PrintResources, false},
                                            {&Tables::PrintPhases, true},
                                            {&Tables::PrintProcedures, true},
                                            {&Tables::PrintPriorities, true}};
    for (const auto& [print, flushes] : cases) {
        std::FILE* const stream = std::fopen(other.c_str(), "w");
        std::fputs("waiting", stream);
        Printed(*tables, print);
        EXPECT_EQ(TextOf(other), flushes ? "waiting" : "");
        std::fclose(stream);
    }
    std::remove(other.c_str());
}

}  // namespace
