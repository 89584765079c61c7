#pragma once
#include <cow/cow_String.h>

namespace heat {

// Throws HeatError unless the MSH file (version 2.x or 4.1, text or binary) labels its nodes from 1
// to 2^31-1, each differently. Asked before Gmsh reads the file: Gmsh gives a node labelled 0 a new
// label, cuts labels of version 2 to 32 bits and lets one of two equal ones win.
void CheckNodeLabels(const cow_String& path);

}  // namespace heat
