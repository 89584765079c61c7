#pragma once
#include <kzm_export.h>

// A base for resource managers; no behaviour of its own.
class KZM_API KZMBasSrmBase {
public:
    // Do nothing.
    KZMBasSrmBase();
    ~KZMBasSrmBase();
};

// Records of memory figures: lists of values under names, sorted by name. Null reads as "".
class KZM_API KZMBasSrmMemoryInfo {
public:
    // Without records.
    KZMBasSrmMemoryInfo();
    KZMBasSrmMemoryInfo(const KZMBasSrmMemoryInfo&) = delete;
    KZMBasSrmMemoryInfo& operator=(const KZMBasSrmMemoryInfo&) = delete;
    ~KZMBasSrmMemoryInfo();

    // Appends to the record's list. The last argument is not used.
    void AddRecord(const char* name, unsigned value, unsigned);

    // Length of the record's list. A name never recorded gives 0 and is recorded from then on.
    unsigned GangSize(const char* name) const;

    void PrintTable() const;  // prints nothing

private:
    struct Table;
    Table* m_table;  // owned
};
