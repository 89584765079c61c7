#include <gtest/gtest.h>
#include <platform/platform.h>
#include <runtime/srm_ResourceConstData.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <string>

namespace {

using Tables = srm_ResourceConstData;

std::string TextOf(const std::string& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The text, and behind it what waited in another stream, where that was flushed.
std::string Printed(const Tables& tables, void (Tables::*print)(std::FILE*, int) const) {
    const std::string name = testing::TempDir() + "tables" + std::to_string(platform::ProcessId());
    const std::string other = name + "2";
    std::FILE* const file = std::fopen(name.c_str(), "w");
    std::FILE* const waiting = std::fopen(other.c_str(), "w");
    std::fputs("flushed", waiting);
    (tables.*print)(file, 0);
    const std::string flushed = TextOf(other);
    for (std::FILE* const each : {file, waiting}) std::fclose(each);
    const std::string text = TextOf(name);
    for (const std::string& each : {name, other}) std::remove(each.c_str());
    return text + flushed;
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
    EXPECT_EQ(Printed(tables, &Tables::PrintPhases), Numbered("Phases:\n", 22, " ") + "flushed");
    EXPECT_EQ(Printed(tables, &Tables::PrintProcedures),
              Numbered("Procedures:\n", 6, " ") + "flushed");
    EXPECT_EQ(Printed(tables, &Tables::PrintPriorities),
              Numbered("Priorities:\n", 6, " ") + "flushed");
    EXPECT_EQ(Printed(tables, &Tables::PrintResources),
              Numbered("Resources:\n", 65, std::string(23, ' ') + "   0   0"));
}

TEST(ResourceTables, PrintWhatTheManagerFilledIn) {
    const auto tables = std::make_unique<Tables>();
    tables->m_purgeIdBase = 100;
    tables->LocalPurgeId()[3] = 7;
    tables->LocalPurgeId()[64] = 0x7FFFFFFF;
    EXPECT_EQ(tables->PurgeId(static_cast<srm_ResourceEnums>(3)), 107);
    EXPECT_EQ(tables->PurgeId(srm_LastResource), -0x7FFFFFFF - 1 + 99);
    std::strcpy(tables->m_resourceNames[3], "X");
    EXPECT_EQ(Printed(*tables, &Tables::PrintResources).substr(11 + 3 * 36, 36),
              "  3) X" + std::string(21, ' ') + "   7 107\n");

    std::strcpy(tables->m_procedureNames[0], "P");
    std::strcpy(tables->m_phaseNames[2], "Q");
    std::strcpy(tables->m_resourceNames[64], "100%d");  // a name is no format
    tables->m_resourceOfPurgeId[4] = 64;
    tables->m_resourceOfPurgeId[44] = 3;
    const std::int32_t lists[2][3] = {{1, 4, 9}, {2, 44, 4}};
    std::memcpy(tables->m_purgeables[0][2], lists[0], sizeof lists[0]);
    std::memcpy(tables->m_purgeables[5][21], lists[1], sizeof lists[1]);
    EXPECT_EQ(Printed(*tables, &Tables::PrintPriorities),
              "Priorities:\n  0) P\n     phase 2 Q: 1 purgeables:\n               4 100%d\n\n"
              "  1) \n  2) \n  3) \n  4) \n  5) \n     phase 21 : 2 purgeables:\n"
              "              44 X\n               4 100%d\n\nflushed");
}

}  // namespace
