#include "raster.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace heat {
namespace {

Point Normalised(const Point& p) {
    const double length = std::sqrt(Dot(p, p));
    if (!(length > 0)) return {0, 0, 1};
    return {p[0] / length, p[1] / length, p[2] / length};
}

// Light from the upper left in front of the part, a weak one from the viewer, a small highlight.
std::uint32_t Shaded(double value, const Point& normal) {
    static const Point kLamp = Normalised({-0.45, -0.75, 0.75});
    static const Point kHalfway = Normalised({kLamp[0], kLamp[1], kLamp[2] + 1});
    const Point n = Normalised(normal);
    const double diffuse = std::max(0.0, Dot(n, kLamp));
    const double light = 0.60 + 0.34 * diffuse + 0.12 * std::max(0.0, n[2]);
    const double mirrored = std::max(0.0, Dot(n, kHalfway));
    const double sharpened = mirrored * mirrored * mirrored * mirrored * mirrored;
    const double highlight = 0.13 * sharpened * sharpened * sharpened * sharpened;
    std::uint32_t pixel = 0xFF;
    for (const double channel : ColourOf(value)) {
        const double lit = std::clamp(channel * light + highlight, 0.0, 1.0);
        pixel = (pixel << 8) | static_cast<std::uint32_t>(std::lround(255 * lit));
    }
    return pixel;
}

}  // namespace

std::array<double, 3> ColourOf(double value) {
    constexpr double kScale[][3] = {{0.12, 0.19, 0.52}, {0.13, 0.45, 0.75}, {0.25, 0.69, 0.80},
                                    {0.55, 0.83, 0.67}, {0.93, 0.92, 0.56}, {0.98, 0.72, 0.30},
                                    {0.93, 0.42, 0.18}, {0.72, 0.08, 0.13}};
    constexpr int kLast = static_cast<int>(std::size(kScale)) - 1;
    const double place = std::clamp(value, 0.0, 1.0) * kLast;
    const int below = std::min(static_cast<int>(place), kLast - 1);
    const double share = place - below;
    std::array<double, 3> colour;
    for (std::size_t k = 0; k < 3; ++k) {
        colour[k] = (1 - share) * kScale[below][k] + share * kScale[below + 1][k];
    }
    return colour;
}

Raster::Raster(int width, int height)
    : m_width(width),
      m_height(height),
      m_depth(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
              std::numeric_limits<float>::lowest()),
      m_pixels(m_depth.size()) {}

void Raster::Draw(const std::array<Corner, 3>& triangle) {
    const Point &a = triangle[0].at, &b = triangle[1].at, &c = triangle[2].at;
    const double area = (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
    if (area == 0) return;
    const int left = std::max(0, static_cast<int>(std::floor(std::min({a[0], b[0], c[0]}))));
    const int right = std::min(m_width - 1, static_cast<int>(std::max({a[0], b[0], c[0]})));
    const int top = std::max(0, static_cast<int>(std::floor(std::min({a[1], b[1], c[1]}))));
    const int bottom = std::min(m_height - 1, static_cast<int>(std::max({a[1], b[1], c[1]})));
    for (int y = top; y <= bottom; ++y) {
        for (int x = left; x <= right; ++x) {
            const double px = x + 0.5, py = y + 0.5;
            const double wb = ((px - a[0]) * (c[1] - a[1]) - (py - a[1]) * (c[0] - a[0])) / area;
            const double wc = ((b[0] - a[0]) * (py - a[1]) - (b[1] - a[1]) * (px - a[0])) / area;
            const double wa = 1 - wb - wc;
            if (wa < 0 || wb < 0 || wc < 0) continue;
            const auto depth = static_cast<float>(wa * a[2] + wb * b[2] + wc * c[2]);
            const std::size_t pixel =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
                static_cast<std::size_t>(x);
            if (depth <= m_depth[pixel]) continue;
            m_depth[pixel] = depth;
            Point normal;
            for (std::size_t k = 0; k < 3; ++k) {
                normal[k] = wa * triangle[0].normal[k] + wb * triangle[1].normal[k] +
                            wc * triangle[2].normal[k];
            }
            m_pixels[pixel] = Shaded(
                wa * triangle[0].value + wb * triangle[1].value + wc * triangle[2].value, normal);
        }
    }
}

void Raster::DrawLine(const Point& from, const Point& to, int thickness, double bias,
                      std::uint32_t colour) {
    const Point along = Difference(to, from);
    const int steps = 1 + static_cast<int>(std::max(std::fabs(along[0]), std::fabs(along[1])));
    for (int i = 0; i <= steps; ++i) {
        const double share = static_cast<double>(i) / steps;
        const int x = static_cast<int>(from[0] + share * along[0]) - thickness / 2;
        const int y = static_cast<int>(from[1] + share * along[1]) - thickness / 2;
        const double depth = from[2] + share * along[2] + bias;
        for (int row = std::max(0, y); row < std::min(m_height, y + thickness); ++row) {
            for (int column = std::max(0, x); column < std::min(m_width, x + thickness); ++column) {
                const std::size_t pixel =
                    static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) +
                    static_cast<std::size_t>(column);
                if (depth >= m_depth[pixel]) m_pixels[pixel] = colour;
            }
        }
    }
}

}  // namespace heat
