#include "part.h"

#include <gmsh.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <filesystem>
#include <limits>
#include <new>
#include <numbers>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "files.h"
#include "gmsh_session.h"
#include "heat_error.h"
#include "msh_labels.h"

namespace heat {
namespace {

// Above this an edge length is taken for a mistake: the job would need tens of gigabytes.
constexpr double kMostElements = 30e6;
constexpr double kElementsPerCube = 9;  // tetrahedra in a cube of the edge length, by experience

enum class FileKind { kStep, kBrep, kMsh, kStl };

// Told by name and contents. Gmsh runs what it does not recognise as a script, so nothing else may
// get that far.
FileKind KindOf(const cow_String& path) {
    std::error_code error;
    if (std::filesystem::exists(path.CStr(), error) &&
        !std::filesystem::is_regular_file(path.CStr(), error)) {
        throw HeatError(Text("'", path, "' is not a file"));
    }
    const std::string start = OnFile("cannot read", path, [&] { return StartOfFile(path, 1024); });
    const std::string_view head = start;
    const std::string name = path.CStr();
    const auto endsWith = [&](std::string_view lower, std::string_view upper) {
        return name.ends_with(lower) || name.ends_with(upper);
    };
    if (endsWith(".step", ".STEP") || endsWith(".stp", ".STP")) {
        if (head.starts_with("ISO-10303-21")) return FileKind::kStep;
        throw HeatError(Text("'", path, "' is not a STEP file"));
    }
    if (endsWith(".brep", ".BREP")) {
        const bool isBrep = head.find("DBRep_DrawableShape") != head.npos ||
                            head.find("CASCADE Topology") != head.npos;
        if (isBrep) return FileKind::kBrep;
        throw HeatError(Text("'", path, "' is not a BREP file"));
    }
    if (endsWith(".msh", ".MSH")) {
        if (head.starts_with("$MeshFormat") || head.starts_with("$Comments")) return FileKind::kMsh;
        throw HeatError(Text("'", path, "' is not an MSH file"));
    }
    if (endsWith(".stl", ".STL")) {
        const auto size = std::filesystem::file_size(path.CStr(), error);
        if (head.starts_with("solid") || (size > 84 && (size - 84) % 50 == 0))
            return FileKind::kStl;
        throw HeatError(Text("'", path, "' is not an STL file"));
    }
    throw HeatError(
        Text("'", path, "' is neither a CAD file (.step .stp .brep) nor a mesh (.msh .stl)"));
}

struct Box {
    double low[3];
    double high[3];
    double Longest() const {
        return std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]});
    }
};

Box BoxOf(const std::vector<double>& coordinates) {
    Box box;
    for (int k = 0; k < 3; ++k) {
        box.low[k] = std::numeric_limits<double>::max();
        box.high[k] = std::numeric_limits<double>::lowest();
    }
    for (std::size_t i = 0; i < coordinates.size(); ++i) {
        box.low[i % 3] = std::min(box.low[i % 3], coordinates[i]);
        box.high[i % 3] = std::max(box.high[i % 3], coordinates[i]);
    }
    return box;
}

void SetSize(double size, double longest, double volume) {
    if (!(longest > 0)) throw HeatError("the part has no extent");
    if (size == 0) size = longest / 40;
    const double expected = kElementsPerCube * volume / (size * size * size);
    if (expected > kMostElements || longest / size > kMostElements) {
        throw HeatError(
            "--size is too small for this part: it would take more than 30 million tetrahedra");
    }
    for (const char* option : {"Mesh.MeshSizeMin", "Mesh.MeshSizeMax"}) {
        gmsh::option::setNumber(option, size);
    }
}

void MakeTetrahedra(Progress& progress) {
    progress.Begin("meshing");
    const char* const details[] = {"edges", "surfaces", "volume"};
    for (int dimension = 1; dimension <= 3; ++dimension) {
        progress.Detail(details[dimension - 1]);
        gmsh::model::mesh::generate(dimension);
    }
}

void MeshCad(const Options& options, FileKind kind, Progress& progress) {
    gmsh::option::setString("Geometry.OCCTargetUnit", "MM");
    gmsh::vectorpair shapes;
    gmsh::model::occ::importShapes(options.part.CStr(), shapes, true,
                                   kind == FileKind::kStep ? "step" : "brep");
    // Solids that touch get common faces.
    if (shapes.size() > 1 && shapes[0].first == 3) gmsh::model::occ::removeAllDuplicates();
    gmsh::model::occ::synchronize();
    gmsh::vectorpair solids;
    gmsh::model::getEntities(solids, 3);
    if (solids.empty()) throw HeatError(Text("'", options.part, "' holds no solid"));
    Box box;
    gmsh::model::getBoundingBox(-1, -1, box.low[0], box.low[1], box.low[2], box.high[0],
                                box.high[1], box.high[2]);
    double volume = 0;
    for (const auto& [dimension, tag] : solids) {
        double mass = 0;
        gmsh::model::occ::getMass(dimension, tag, mass);
        volume += std::fabs(mass);
    }
    SetSize(options.size, box.Longest(), volume);
    MakeTetrahedra(progress);
}

// The volume inside the surface triangles, which must close it.
double EnclosedVolume(const cow_String& path) {
    std::vector<std::size_t> tags, corners;
    gmsh::model::mesh::getElementsByType(2, tags, corners);
    if (tags.empty()) throw HeatError(Text("'", path, "' holds no tetrahedra and no surface"));
    std::vector<std::size_t> nodes;
    std::vector<double> coordinates, none;
    gmsh::model::mesh::getNodes(nodes, coordinates, none, -1, -1, false, false);
    std::vector<std::pair<std::size_t, std::size_t>> places;
    for (std::size_t i = 0; i < nodes.size(); ++i) places.emplace_back(nodes[i], i);
    std::sort(places.begin(), places.end());
    const auto point = [&](std::size_t tag) {
        const auto found =
            std::lower_bound(places.begin(), places.end(), std::make_pair(tag, std::size_t{0}));
        return coordinates.data() + 3 * found->second;
    };
    std::vector<std::pair<std::size_t, std::size_t>> edges;
    double sixfold = 0;
    for (std::size_t i = 0; i < corners.size(); i += 3) {
        for (std::size_t k = 0; k < 3; ++k) {
            edges.push_back(std::minmax(corners[i + k], corners[i + (k + 1) % 3]));
        }
        const double *a = point(corners[i]), *b = point(corners[i + 1]), *c = point(corners[i + 2]);
        sixfold += a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) +
                   a[2] * (b[0] * c[1] - b[1] * c[0]);
    }
    std::sort(edges.begin(), edges.end());
    for (std::size_t i = 0; i < edges.size();) {
        const auto next = std::find_if(edges.begin() + static_cast<std::ptrdiff_t>(i), edges.end(),
                                       [&](const auto& each) { return each != edges[i]; });
        const auto uses = static_cast<std::size_t>(next - edges.begin()) - i;
        if (uses % 2 != 0) throw HeatError(Text("the surface in '", path, "' is not closed"));
        i += uses;
    }
    return std::fabs(sixfold) / 6;
}

void MeshInsideOfSurface(const Options& options, Progress& progress) {
    const double volume = EnclosedVolume(options.part);
    std::vector<std::size_t> nodes;
    std::vector<double> coordinates, none;
    gmsh::model::mesh::getNodes(nodes, coordinates, none, -1, -1, false, false);
    SetSize(options.size, BoxOf(coordinates).Longest(), volume);
    constexpr double kCrease = 40 * std::numbers::pi / 180;
    gmsh::model::mesh::classifySurfaces(kCrease, true, true, std::numbers::pi);
    gmsh::model::mesh::createGeometry();
    gmsh::vectorpair surfaces;
    gmsh::model::getEntities(surfaces, 2);
    std::vector<int> shell;
    for (const auto& each : surfaces) shell.push_back(each.second);
    const int loop = gmsh::model::geo::addSurfaceLoop(shell);
    gmsh::model::geo::addVolume({loop});
    gmsh::model::geo::synchronize();
    MakeTetrahedra(progress);
}

std::vector<int> Labels(const std::vector<std::size_t>& tags, const cow_String& name) {
    std::vector<int> labels;
    labels.reserve(tags.size());
    for (const std::size_t tag : tags) {
        if (tag < 1 || tag > INT_MAX) {
            throw HeatError(Text("'", name, "' has a node labelled ", std::to_string(tag).c_str(),
                                 "; labels run from 1 to 2147483647"));
        }
        labels.push_back(static_cast<int>(tag));
    }
    return labels;
}

std::vector<int> Tetrahedra(const cow_String& name) {
    std::vector<int> types;
    std::vector<std::vector<std::size_t>> tags, nodes;
    gmsh::model::mesh::getElements(types, tags, nodes, 3);
    std::vector<int> corners;
    for (std::size_t i = 0; i < types.size(); ++i) {
        std::size_t stride = 0;
        if (types[i] == 4) stride = 4;
        if (types[i] == 11) stride = 10;  // quadratic: its corners come first
        if (stride == 0) {
            throw HeatError(Text("'", name, "' holds volume elements other than tetrahedra"));
        }
        std::vector<std::size_t> own;
        for (std::size_t k = 0; k < nodes[i].size(); k += stride) {
            for (std::size_t corner = 0; corner < 4; ++corner) own.push_back(nodes[i][k + corner]);
        }
        const std::vector<int> labels = Labels(own, name);
        corners.insert(corners.end(), labels.begin(), labels.end());
    }
    return corners;
}

void ReadFaces(Part& part) {
    gmsh::vectorpair faces;
    gmsh::model::getEntities(faces, 2);
    for (const auto& [dimension, tag] : faces) {
        std::vector<std::size_t> nodes;
        std::vector<double> coordinates, none;
        gmsh::model::mesh::getNodes(nodes, coordinates, none, dimension, tag, true, false);
        if (nodes.empty()) continue;
        const Box box = BoxOf(coordinates);
        ModelFace& face = part.faces.emplace_back();
        face.labels = Labels(nodes, part.name);
        std::copy(box.low, box.low + 3, face.low);
        std::copy(box.high, box.high + 3, face.high);
    }
}

Part ReadWithGmsh(const Options& options, FileKind kind, Progress& progress) {
    Part part;
    part.name = std::filesystem::path(options.part.CStr()).filename().c_str();
    part.isCad = kind == FileKind::kStep || kind == FileKind::kBrep;
    const GmshSession session;
    if (part.isCad) {
        MeshCad(options, kind, progress);
    } else {
        gmsh::merge(options.part.CStr());
    }
    part.corners = Tetrahedra(part.name);
    if (part.corners.empty() && !part.isCad) {
        MeshInsideOfSurface(options, progress);
        part.corners = Tetrahedra(part.name);
    }
    if (part.corners.empty()) {
        throw HeatError(Text("no tetrahedra could be made in '", options.part, "'"));
    }
    std::vector<std::size_t> nodes;
    std::vector<double> none;
    gmsh::model::mesh::getNodes(nodes, part.coordinates, none, -1, -1, false, false);
    part.labels = Labels(nodes, part.name);
    if (part.isCad) ReadFaces(part);
    return part;
}

}  // namespace

Part ReadPart(const Options& options, Progress& progress) {
    progress.Begin("reading");
    const FileKind kind = KindOf(options.part);
    if (kind == FileKind::kMsh) CheckNodeLabels(options.part);
    std::string reason;
    try {
        return ReadWithGmsh(options, kind, progress);
    } catch (const std::string& thrown) {  // Gmsh throws texts
        reason = thrown;
    } catch (int) {
        reason = "Gmsh gave up";
    } catch (const std::bad_alloc&) {  // also what a damaged file counts
        reason = "it is damaged or needs more memory than there is";
    } catch (const std::length_error&) {
        reason = "it is damaged";
    }
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    throw HeatError(Text("'", options.part, "' cannot be read and meshed: ", reason.c_str()));
}

}  // namespace heat
