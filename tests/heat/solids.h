#pragma once
#include <functional>
#include <string>

// The box of 4 by 1 by 1 in files of every kind the job reads.
struct BoxMesh {
    // Labels of the nodes, from their place in the grid counted from 0.
    std::function<long long(int)> label = [](int place) { return place + 1; };
    bool isVersion4 = false;
};
void WriteBoxMesh(const std::string& path, const BoxMesh& options);
void WriteBoxStl(const std::string& path, bool isClosed);
void WriteBoxBrep(const std::string& path);
