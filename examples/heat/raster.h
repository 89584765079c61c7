#pragma once
#include <array>
#include <cstdint>
#include <vector>

#include "mesh.h"

namespace heat {

// A corner in the picture: x to the right and y down in pixels, z towards the viewer.
struct Corner {
    Point at;
    Point normal;  // in the same axes, any length
    double value;  // 0 to 1 along the colour scale
};

// The colour of a value from 0 (cold) to 1 (hot): red, green, blue from 0 to 1.
std::array<double, 3> ColourOf(double value);

// A canvas with a depth for each pixel. What is drawn nearer hides what is behind, whatever the
// order. Pixels nobody drew stay transparent.
class Raster {
public:
    Raster(int width, int height);

    void Draw(const std::array<Corner, 3>& triangle);
    // It shows where nothing is nearer than it by more than the bias.
    void DrawLine(const Point& from, const Point& to, int thickness, double bias,
                  std::uint32_t colour);

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    // Row by row from the top, 0xAARRGGBB.
    std::uint32_t* Pixels() { return m_pixels.data(); }

private:
    int m_width;
    int m_height;
    std::vector<float> m_depth;
    std::vector<std::uint32_t> m_pixels;
};

}  // namespace heat
