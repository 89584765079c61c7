#include "vtu.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <numeric>

namespace heat {
namespace {

// Collects the arrays' descriptions and their bytes, each block after its length.
class Arrays {
public:
    template <class T>
    std::string Add(const char* name, const char* type, int components, const T* values,
                    std::size_t count) {
        std::string tag =
            "<DataArray type=\"" + std::string(type) + "\" Name=\"" + name +
            "\" NumberOfComponents=\"" + std::to_string(components) + "\" NumberOfTuples=\"" +
            std::to_string(count / static_cast<std::size_t>(components)) +
            "\" format=\"appended\" offset=\"" + std::to_string(m_bytes.size()) + "\"/>\n";
        const std::uint64_t size = count * sizeof(T);
        m_bytes.append(reinterpret_cast<const char*>(&size), sizeof size);
        m_bytes.append(reinterpret_cast<const char*>(values), size);
        return tag;
    }
    const std::string& Bytes() const { return m_bytes; }

private:
    std::string m_bytes;
};

std::string FileStart(const char* type) {
    const bool isLittle = std::endian::native == std::endian::little;
    return "<?xml version=\"1.0\"?>\n<VTKFile type=\"" + std::string(type) +
           "\" version=\"1.0\" byte_order=\"" + (isLittle ? "Little" : "Big") +
           "Endian\" header_type=\"UInt64\">\n";
}

constexpr char kGhosts[] = "vtkGhostType";
constexpr std::uint8_t kDuplicate = 1;  // shown by another piece

// Of each node of a share.
std::vector<std::int32_t> RanksOfNodes(const Domain& domain, int own) {
    std::vector<std::int32_t> ranks;
    for (int row = 0; row < static_cast<int>(domain.mesh.Nodes()); ++row) {
        ranks.push_back(domain.RankOf(row, own));
    }
    return ranks;
}

}  // namespace

std::string VtuOf(const Domain& domain, const std::vector<double>& temperatureOfRow,
                  bool isConverged, const Ranks& ranks) {
    const Mesh& mesh = domain.mesh;
    const std::size_t nodes = mesh.Nodes();
    const std::size_t elements = mesh.elements.size();
    std::vector<std::int32_t> offsets(elements, 4);
    std::partial_sum(offsets.begin(), offsets.end(), offsets.begin());
    const std::vector<std::uint8_t> types(elements, 10);  // tetrahedra

    Arrays arrays;
    std::string text = FileStart("UnstructuredGrid") + "<UnstructuredGrid>\n<FieldData>\n";
    const std::int32_t converged = isConverged ? 1 : 0;
    text += arrays.Add("converged", "Int32", 1, &converged, 1);
    text += "</FieldData>\n<Piece NumberOfPoints=\"" + std::to_string(nodes) +
            "\" NumberOfCells=\"" + std::to_string(elements) + "\">\n";
    text += "<PointData Scalars=\"temperature\">\n";
    text += arrays.Add("temperature", "Float64", 1, temperatureOfRow.data(), nodes);
    text += arrays.Add("label", "Int32", 1, mesh.labels.data(), nodes);
    if (ranks.Count() > 1) {
        const std::vector<std::int32_t> rankOf = RanksOfNodes(domain, ranks.Own());
        std::vector<std::uint8_t> ghosts(nodes);
        std::fill(ghosts.begin() + static_cast<long>(mesh.own), ghosts.end(), kDuplicate);
        text += arrays.Add("rank", "Int32", 1, rankOf.data(), nodes);
        text += arrays.Add(kGhosts, "UInt8", 1, ghosts.data(), nodes);
        ghosts.assign(elements, 0);
        for (std::size_t i = 0; i < elements; ++i) {
            if (domain.LowestRank(mesh.elements[i], ranks.Own()) < ranks.Own()) {
                ghosts[i] = kDuplicate;
            }
        }
        text += "</PointData>\n<CellData>\n";
        text += arrays.Add(kGhosts, "UInt8", 1, ghosts.data(), elements);
        text += "</CellData>\n<Points>\n";
    } else {
        text += "</PointData>\n<Points>\n";
    }
    text += arrays.Add("position", "Float64", 3, mesh.coordinates.begin(), 3 * nodes);
    text += "</Points>\n<Cells>\n";
    text += arrays.Add("connectivity", "Int32", 1, mesh.elements.data()->data(), 4 * elements);
    text += arrays.Add("offsets", "Int32", 1, offsets.data(), elements);
    text += arrays.Add("types", "UInt8", 1, types.data(), elements);
    text += "</Cells>\n</Piece>\n</UnstructuredGrid>\n<AppendedData encoding=\"raw\">\n_";
    text += arrays.Bytes();
    text += "\n</AppendedData>\n</VTKFile>\n";
    return text;
}

std::string PvtuOf(const Ranks& ranks) {
    const std::string ghosts =
        "<PDataArray type=\"UInt8\" Name=\"" + std::string(kGhosts) + "\"/>\n";
    std::string text = FileStart("PUnstructuredGrid") +
                       "<PUnstructuredGrid GhostLevel=\"1\">\n"
                       "<PPointData Scalars=\"temperature\">\n"
                       "<PDataArray type=\"Float64\" Name=\"temperature\"/>\n"
                       "<PDataArray type=\"Int32\" Name=\"label\"/>\n"
                       "<PDataArray type=\"Int32\" Name=\"rank\"/>\n" +
                       ghosts + "</PPointData>\n<PCellData>\n" + ghosts +
                       "</PCellData>\n<PPoints>\n<PDataArray type=\"Float64\" "
                       "Name=\"position\" NumberOfComponents=\"3\"/>\n</PPoints>\n";
    for (int rank = 0; rank < ranks.Count(); ++rank) {
        text += "<Piece Source=\"" + PieceName(rank) + "\"/>\n";
    }
    return text + "</PUnstructuredGrid>\n</VTKFile>\n";
}

std::string PieceName(int rank) { return "temperature_" + std::to_string(rank) + ".vtu"; }

}  // namespace heat
