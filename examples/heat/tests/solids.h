#pragma once
#include <algorithm>
#include <fstream>
#include <string>

// The box of 4 by 1 by 1 in cells of a third of a unit, 12 by 3 by 3, of six tetrahedra each. Its
// 208 nodes get labels from their place in the grid, counted from 0. With more than 12 cells along
// x it is a longer bar, which takes about as many iterations.
template <class Labels>
void WriteBoxMesh(const std::string& path, bool isVersion4, Labels label, int cells = 12) {
    std::ofstream file(path);
    const int row = cells + 1, nodes = 16 * row, elements = 54 * cells;
    const auto position = [&](int place) {
        return std::to_string(place % row / 3.0) + " " + std::to_string(place / row % 4 / 3.0) +
               " " + std::to_string(place / (4 * row) / 3.0) + "\n";
    };
    if (isVersion4) {
        file << "$MeshFormat\n4.1 0 8\n$EndMeshFormat\n$Entities\n0 0 0 1\n1 0 0 0 4 1 1 0 0\n"
             << "$EndEntities\n$Nodes\n1 " << nodes << " " << label(0) << " " << label(nodes - 1)
             << "\n3 1 0 " << nodes << "\n";
        for (int i = 0; i < nodes; ++i) file << label(i) << "\n";
        for (int i = 0; i < nodes; ++i) file << position(i);
        file << "$EndNodes\n$Elements\n1 " << elements << " 1 " << elements << "\n3 1 4 "
             << elements << "\n";
    } else {
        file << "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n" << nodes << "\n";
        for (int i = 0; i < nodes; ++i) file << label(i) << " " << position(i);
        file << "$EndNodes\n$Elements\n" << elements << "\n";
    }
    int element = 0;
    for (int cell = 0; cell < 9 * cells; ++cell) {
        int steps[] = {1, row, 4 * row};  // along an edge of the cell in x, y and z
        do {
            int corner = cell % cells + row * (cell / cells % 3) + 4 * row * (cell / (3 * cells));
            file << ++element << (isVersion4 ? " " : " 4 2 1 1 ") << label(corner);
            for (const int step : steps) file << " " << label(corner += step);
            file << "\n";
        } while (std::next_permutation(std::begin(steps), std::end(steps)));
    }
    file << "$EndElements\n";
}

inline void WriteBoxStl(const std::string& path, bool isClosed) {
    const std::string corners = "023031457476015054267273046062137175";  // bits: x, y, z
    std::ofstream file(path);
    file << "solid box\n";
    for (std::size_t i = 0; i < (isClosed ? 36 : 33); ++i) {
        const int corner = corners[i] - '0';
        if (i % 3 == 0) file << "facet normal 0 0 0\nouter loop\n";
        file << "vertex " << 4 * (corner & 1) << " " << (corner >> 1 & 1) << " " << (corner >> 2)
             << "\n";
        if (i % 3 == 2) file << "endloop\nendfacet\n";
    }
    file << "endsolid box\n";
}
