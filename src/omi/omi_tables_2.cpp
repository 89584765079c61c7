#include "omi_tables_define.h"

OMI_TABLE_INSTANCES_2(OMI_DEFINE_TABLES)
