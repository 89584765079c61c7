#include "picture.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <numbers>
#include <string>
#include <utility>

#include "heat_error.h"
#include "raster.h"

namespace heat {
namespace {

constexpr int kWidth = 1600;
constexpr int kHeight = 1000;
constexpr int kPartLeft = 70, kPartTop = 120, kPartWidth = 1230, kPartHeight = 810;
constexpr int kFine = 2;  // drawn pixels per pixel of the picture, for smooth edges
constexpr std::uint32_t kCrease = 0xFF2A2E38, kBorder = 0xFFFFFFFF;  // colours, 0xAARRGGBB
const double kCosCrease = std::cos(15 * std::numbers::pi / 180);  // edges sharper than 15 degrees

struct Free {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, Free>;
using Context = std::unique_ptr<cairo_t, Free>;

// The directions of the picture (right, down, towards the viewer) in the part's axes.
class View {
public:
    View(const Skin& skin, std::size_t longest) {
        const auto [low, high] = ExtentOf(skin);
        const std::size_t next = (longest + 1) % 3, last = (longest + 2) % 3;
        const bool isNextLonger = high[next] - low[next] >= high[last] - low[last];
        Point right{}, up{};
        right[longest] = 1;
        up[isNextLonger ? next : last] = 1;
        const Point front = Cross(right, up);
        const double turn = 0.42, tilt = 0.48;
        for (std::size_t k = 0; k < 3; ++k) {
            const double turned = std::cos(turn) * front[k] - std::sin(turn) * right[k];
            m_right[k] = std::cos(turn) * right[k] + std::sin(turn) * front[k];
            m_down[k] = -std::cos(tilt) * up[k] + std::sin(tilt) * turned;
            m_near[k] = std::cos(tilt) * turned + std::sin(tilt) * up[k];
        }
    }

    Point Turned(const Point& p) const { return {Dot(p, m_right), Dot(p, m_down), Dot(p, m_near)}; }

private:
    Point m_right, m_down, m_near;
};

// Turned points, scaled and moved to fill the part's area.
std::vector<Point> Placed(const Skin& skin, const View& view) {
    std::vector<Point> placed;
    placed.reserve(skin.Nodes());
    for (std::size_t i = 0; i < skin.Nodes(); ++i) placed.push_back(view.Turned(skin.PointAt(i)));
    double low[2] = {placed[0][0], placed[0][1]}, high[2] = {low[0], low[1]};
    for (const Point& point : placed) {
        for (std::size_t k = 0; k < 2; ++k) {
            low[k] = std::min(low[k], point[k]);
            high[k] = std::max(high[k], point[k]);
        }
    }
    const double scale =
        kFine * std::min(kPartWidth / (high[0] - low[0]), kPartHeight / (high[1] - low[1]));
    for (Point& point : placed) {
        point[0] = (point[0] - (low[0] + high[0]) / 2) * scale + kFine * kPartWidth / 2.0;
        point[1] = (point[1] - (low[1] + high[1]) / 2) * scale + kFine * kPartHeight / 2.0;
        point[2] *= scale;
    }
    return placed;
}

double CosineOf(const Point& a, const Point& b) {
    return Dot(a, b) / std::sqrt(Dot(a, a) * Dot(b, b));
}

void DrawSurface(Raster& raster, const Skin& skin, const std::vector<Point>& placed,
                 const std::vector<double>& value) {
    const auto at = [&](int row) -> const Point& { return placed[static_cast<std::size_t>(row)]; };
    std::vector<Point> normals;
    std::vector<std::vector<std::size_t>> around(placed.size());
    std::map<std::pair<int, int>, std::size_t> openEdges;
    for (std::size_t i = 0; i < skin.triangles.size(); ++i) {
        const std::array<int, 3>& rows = skin.triangles[i];
        // The picture's axes are left-handed, since y points down.
        normals.push_back(
            Cross(Difference(at(rows[2]), at(rows[0])), Difference(at(rows[1]), at(rows[0]))));
        for (const int row : rows) around[static_cast<std::size_t>(row)].push_back(i);
    }
    for (std::size_t i = 0; i < skin.triangles.size(); ++i) {
        std::array<Corner, 3> corners;
        for (std::size_t k = 0; k < 3; ++k) {
            const auto row = static_cast<std::size_t>(skin.triangles[i][k]);
            corners[k] = {placed[row], {0, 0, 0}, value[row]};
            for (const std::size_t other : around[row]) {
                if (CosineOf(normals[other], normals[i]) < kCosCrease) continue;
                for (std::size_t j = 0; j < 3; ++j) corners[k].normal[j] += normals[other][j];
            }
        }
        raster.Draw(corners);
    }
    for (std::size_t i = 0; i < skin.triangles.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            const int from = skin.triangles[i][k], to = skin.triangles[i][(k + 1) % 3];
            const auto [other, isNew] = openEdges.try_emplace(std::minmax(from, to), i);
            if (isNew) continue;
            if (skin.ranks[other->second] != skin.ranks[i]) {
                raster.DrawLine(at(from), at(to), 2 * kFine, 4.0 * kFine, kBorder);
            } else if (CosineOf(normals[other->second], normals[i]) < kCosCrease) {
                raster.DrawLine(at(from), at(to), kFine, 4.0 * kFine, kCrease);
            }
            openEdges.erase(other);
        }
    }
}

// With '?' for each byte that is no part of a character: a text with such a byte, or with a code
// that stands for no character, puts Cairo into a state in which it draws no text at all.
std::string Drawable(std::string text) {
    constexpr unsigned kLowest[] = {0, 0, 0x80, 0x800, 0x10000};
    for (std::size_t i = 0; i < text.size();) {
        const unsigned lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        unsigned code = length == 1 ? lead : lead & (0x7Fu >> length);
        std::size_t size = 1;
        for (; size < length && i + size < text.size(); ++size) {
            const unsigned next = static_cast<unsigned char>(text[i + size]);
            if (next >> 6 != 2) break;
            code = code << 6 | (next & 0x3F);
        }
        const bool isEncoded = size == length && code >= kLowest[length] && code <= 0x10FFFF &&
                               lead < 0xF8 && (length > 1 || lead < 0x80);
        const bool isCharacter =
            code >> 11 != 0x1B && (code & 0xFFFE) != 0xFFFE && (code < 0xFDD0 || code > 0xFDEF);
        if (!isEncoded) size = 1;
        if (!isEncoded || !isCharacter) std::fill_n(text.begin() + static_cast<long>(i), size, '?');
        i += size;
    }
    return text;
}

void Show(cairo_t* context, double x, double y, double size, const char* text, bool bold = false) {
    cairo_select_font_face(context, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, size);
    cairo_set_source_rgb(context, 0.13, 0.15, 0.19);
    cairo_move_to(context, x, y);
    cairo_show_text(context, text);
}

void DrawLegend(cairo_t* context, double lowest, double highest) {
    constexpr double kLeft = 1390, kTop = 210, kBarWidth = 36, kBarHeight = 600;
    constexpr int kTicks = 8;
    Show(context, kLeft - 10, kTop - 60, 24, "Temperature", true);
    Show(context, kLeft - 10, kTop - 32, 22, "in \u00B0C");
    for (int i = 0; i < static_cast<int>(kBarHeight); ++i) {
        const auto colour = ColourOf(1 - (i + 0.5) / kBarHeight);
        cairo_set_source_rgb(context, colour[0], colour[1], colour[2]);
        cairo_rectangle(context, kLeft, kTop + i, kBarWidth, 1);
        cairo_fill(context);
    }
    cairo_set_source_rgb(context, 0.13, 0.15, 0.19);
    cairo_set_line_width(context, 1);
    cairo_rectangle(context, kLeft - 0.5, kTop - 0.5, kBarWidth + 1, kBarHeight + 1);
    cairo_stroke(context);
    const int decimals =
        std::clamp(2 - static_cast<int>(std::floor(std::log10(highest - lowest))), 0, 6);
    for (int i = 0; i <= kTicks; ++i) {
        const double y = std::floor(kTop + kBarHeight * (1 - i / double(kTicks))) + 0.5;
        cairo_move_to(context, kLeft + kBarWidth, y);
        cairo_line_to(context, kLeft + kBarWidth + 9, y);
        cairo_stroke(context);
        char number[40];
        std::snprintf(number, sizeof number, "%.*f", decimals,
                      lowest + (highest - lowest) * i / kTicks);
        Show(context, kLeft + kBarWidth + 17, y + 7, 21, number);
    }
}

void DrawAxes(cairo_t* context, const View& view) {
    constexpr double kX = 90, kY = 910, kLength = 52;
    const char* const names[] = {"x", "y", "z"};
    for (std::size_t k = 0; k < 3; ++k) {
        Point axis{};
        axis[k] = kLength;
        const Point tip = view.Turned(axis);
        cairo_set_source_rgb(context, 0.13, 0.15, 0.19);
        cairo_set_line_width(context, 2);
        cairo_move_to(context, kX, kY);
        cairo_line_to(context, kX + tip[0], kY + tip[1]);
        cairo_stroke(context);
        Show(context, kX + 1.28 * tip[0] - 5, kY + 1.28 * tip[1] + 5, 18, names[k]);
    }
}

cairo_status_t Append(void* target, const unsigned char* bytes, unsigned count) {
    static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
}

}  // namespace

std::string PictureOf(const Skin& skin, int axis, const Figures& figures) {
    const auto [low, high] =
        std::minmax_element(skin.temperatures.begin(), skin.temperatures.end());
    std::vector<double> value;
    for (const double each : skin.temperatures) value.push_back((each - *low) / (*high - *low));
    const View view(skin, static_cast<std::size_t>(axis));
    Raster raster(kFine * kPartWidth, kFine * kPartHeight);
    DrawSurface(raster, skin, Placed(skin, view), value);

    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth, kHeight));
    const Context context(cairo_create(surface.get()));
    cairo_set_source_rgb(context.get(), 1, 1, 1);
    cairo_paint(context.get());
    const Surface fine(cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(raster.Pixels()), CAIRO_FORMAT_ARGB32, raster.Width(),
        raster.Height(), 4 * raster.Width()));
    cairo_save(context.get());
    cairo_translate(context.get(), kPartLeft, kPartTop);
    cairo_scale(context.get(), 1.0 / kFine, 1.0 / kFine);
    cairo_set_source_surface(context.get(), fine.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context.get()), CAIRO_FILTER_BEST);
    cairo_paint(context.get());
    cairo_restore(context.get());

    Show(context.get(), kPartLeft, 64, 32, Drawable(figures.part.CStr()).c_str(), true);
    char parts[32] = "", mark[48] = "";
    if (figures.rankCount > 1) {
        std::snprintf(parts, sizeof parts, " in %d parts", figures.rankCount);
    }
    if (!figures.solution.isConverged) {
        std::snprintf(mark, sizeof mark, ", NOT CONVERGED after %d iterations",
                      figures.solution.iterations);
    }
    char line[200];
    std::snprintf(line, sizeof line,
                  "Steady heat conduction along %c, %.0f nodes, %.0f tetrahedra%s%s", "xyz"[axis],
                  figures.nodes, figures.elements, parts, mark);
    Show(context.get(), kPartLeft, 98, 22, line);
    DrawLegend(context.get(), *low, *high);
    DrawAxes(context.get(), view);

    std::string png;
    if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS ||
        cairo_surface_write_to_png_stream(surface.get(), &Append, &png) != CAIRO_STATUS_SUCCESS) {
        throw HeatError("the picture cannot be drawn");
    }
    return png;
}

}  // namespace heat
