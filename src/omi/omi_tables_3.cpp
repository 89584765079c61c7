#include "omi_tables_define.h"

OMI_TABLE_INSTANCES_3(OMI_DEFINE_TABLES)
