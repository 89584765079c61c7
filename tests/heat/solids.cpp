#include "solids.h"

#include <gmsh.h>

#include <array>
#include <fstream>
#include <vector>

namespace {

constexpr int kCells[3] = {12, 3, 3};
constexpr double kStep = 1.0 / 3;

int Place(int x, int y, int z) { return x + (kCells[0] + 1) * (y + (kCells[1] + 1) * z); }

std::vector<std::array<int, 4>> Elements() {
    constexpr int kOrders[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2},
                                   {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    std::vector<std::array<int, 4>> elements;
    for (int x = 0; x < kCells[0]; ++x) {
        for (int y = 0; y < kCells[1]; ++y) {
            for (int z = 0; z < kCells[2]; ++z) {
                for (const auto& order : kOrders) {
                    int at[3] = {x, y, z};
                    std::array<int, 4> corners = {Place(x, y, z)};
                    for (std::size_t k = 0; k < 3; ++k) {
                        ++at[order[k]];
                        corners[k + 1] = Place(at[0], at[1], at[2]);
                    }
                    elements.push_back(corners);
                }
            }
        }
    }
    return elements;
}

}  // namespace

void WriteBoxMesh(const std::string& path, const BoxMesh& options) {
    std::ofstream file(path);
    const int nodes = Place(kCells[0], kCells[1], kCells[2]) + 1;
    const auto position = [](int place) {
        const int row = place / (kCells[0] + 1);
        return std::to_string(place % (kCells[0] + 1) * kStep) + " " +
               std::to_string(row % (kCells[1] + 1) * kStep) + " " +
               std::to_string(row / (kCells[1] + 1) * kStep) + "\n";
    };
    const std::vector<std::array<int, 4>> elements = Elements();
    file << "$MeshFormat\n" << (options.isVersion4 ? "4.1" : "2.2") << " 0 8\n$EndMeshFormat\n";
    if (options.isVersion4) {
        file << "$Entities\n0 0 0 1\n1 0 0 0 4 1 1 0 0\n$EndEntities\n$Nodes\n1 " << nodes << " "
             << options.label(0) << " " << options.label(nodes - 1) << "\n3 1 0 " << nodes << "\n";
        for (int i = 0; i < nodes; ++i) file << options.label(i) << "\n";
        for (int i = 0; i < nodes; ++i) file << position(i);
        file << "$EndNodes\n$Elements\n1 " << elements.size() << " 1 " << elements.size()
             << "\n3 1 4 " << elements.size() << "\n";
    } else {
        file << "$Nodes\n" << nodes << "\n";
        for (int i = 0; i < nodes; ++i) file << options.label(i) << " " << position(i);
        file << "$EndNodes\n$Elements\n" << elements.size() << "\n";
    }
    for (std::size_t i = 0; i < elements.size(); ++i) {
        file << i + 1 << (options.isVersion4 ? "" : " 4 2 1 1");
        for (const int place : elements[i]) file << " " << options.label(place);
        file << "\n";
    }
    file << "$EndElements\n";
}

void WriteBoxStl(const std::string& path, bool isClosed) {
    constexpr int kTriangles[12][3] = {{0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6},
                                       {0, 1, 5}, {0, 5, 4}, {2, 6, 7}, {2, 7, 3},
                                       {0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}};
    std::ofstream file(path);
    file << "solid box\n";
    for (int i = 0; i < (isClosed ? 12 : 11); ++i) {
        file << "facet normal 0 0 0\nouter loop\n";
        for (const int corner : kTriangles[i]) {
            file << "vertex " << 4 * (corner & 1) << " " << (corner >> 1 & 1) << " "
                 << (corner >> 2) << "\n";
        }
        file << "endloop\nendfacet\n";
    }
    file << "endsolid box\n";
}

void WriteBoxBrep(const std::string& path) {
    gmsh::initialize();
    gmsh::option::setNumber("General.Terminal", 0);
    gmsh::model::occ::addBox(0, 0, 0, 4, 1, 1);
    gmsh::model::occ::synchronize();
    gmsh::write(path);
    gmsh::finalize();
}
