#pragma once
#include <functional>
#include <string>

// The box of 4 by 1 by 1 in files of every kind the job reads. A mesh has 208 nodes; their labels
// come from their place in the grid, counted from 0. With more than 12 cells along x it is a longer
// bar, which takes about as many iterations.
using Labels = std::function<long long(int)>;
void WriteBoxMesh(
    const std::string& path, bool isVersion4 = false,
    const Labels& label = [](int place) { return place + 1; }, int cells = 12);
void WriteBoxStl(const std::string& path, bool isClosed);
void WriteBoxBrep(const std::string& path);
