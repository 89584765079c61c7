#include <runtime/KZMBasSrmMemoryInfo.h>
#include <runtime/mem_AllocationOperators.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct KZMBasSrmMemoryInfo::Table : mem_AllocationOperators {
    std::vector<std::uint32_t>& Record(const char* name) { return m_records[name ? name : ""]; }

private:
    std::map<std::string, std::vector<std::uint32_t>> m_records;
};

KZMBasSrmBase::KZMBasSrmBase() {}
KZMBasSrmBase::~KZMBasSrmBase() {}

KZMBasSrmMemoryInfo::KZMBasSrmMemoryInfo() : m_table(new Table) {}
KZMBasSrmMemoryInfo::~KZMBasSrmMemoryInfo() { delete m_table; }

void KZMBasSrmMemoryInfo::AddRecord(const char* name, unsigned value, unsigned) {
    m_table->Record(name).push_back(value);
}

unsigned KZMBasSrmMemoryInfo::GangSize(const char* name) const {
    return static_cast<unsigned>(m_table->Record(name).size());
}

void KZMBasSrmMemoryInfo::PrintTable() const {}
