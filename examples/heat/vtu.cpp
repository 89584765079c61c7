#include "vtu.h"

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

}  // namespace

std::string VtuOf(const Mesh& mesh, const std::vector<double>& temperatureOfRow, bool isConverged) {
    const std::size_t nodes = mesh.Nodes();
    const std::size_t elements = mesh.elements.size();
    std::vector<std::int32_t> offsets(elements, 4);
    std::partial_sum(offsets.begin(), offsets.end(), offsets.begin());
    const std::vector<std::uint8_t> types(elements, 10);  // tetrahedra

    Arrays arrays;
    const bool isLittle = std::endian::native == std::endian::little;
    std::string text =
        "<?xml version=\"1.0\"?>\n<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" ";
    text += isLittle ? "byte_order=\"LittleEndian\"" : "byte_order=\"BigEndian\"";
    text += " header_type=\"UInt64\">\n<UnstructuredGrid>\n<FieldData>\n";
    const std::int32_t converged = isConverged ? 1 : 0;
    text += arrays.Add("converged", "Int32", 1, &converged, 1);
    text += "</FieldData>\n<Piece NumberOfPoints=\"" + std::to_string(nodes) +
            "\" NumberOfCells=\"" + std::to_string(elements) + "\">\n";
    text += "<PointData Scalars=\"temperature\">\n";
    text += arrays.Add("temperature", "Float64", 1, temperatureOfRow.data(), nodes);
    text += arrays.Add("label", "Int32", 1, mesh.labels.data(), nodes);
    text += "</PointData>\n<Points>\n";
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

}  // namespace heat
