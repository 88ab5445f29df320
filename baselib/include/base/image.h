// The base library's image: a width × height raster of one pixel format, rows stored top-down
// without padding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

struct CimgDefs {
    // Pixel formats; `none` is "no image".
    enum class enType : int { none = 0, gray8 = 1, gray16 = 2, rgb24 = 3, float32 = 4 };

    // Bytes per pixel of a format (0 for none).
    static std::size_t bytesPerPixel(enType type);
};

class Cimage {
public:
    // An empty image of type none.
    Cimage() = default;
    // A zero-filled image; negative sizes count as 0.
    Cimage(int width, int height, CimgDefs::enType type);

    int width() const { return m_width; }
    int height() const { return m_height; }
    CimgDefs::enType type() const { return m_type; }

    // Bytes of one row, and the pixel bytes (row y starts at y * stride()).
    std::size_t stride() const { return m_stride; }
    std::uint8_t* data() { return m_pixels.data(); }
    std::uint8_t const* data() const { return m_pixels.data(); }

private:
    int m_width = 0;
    int m_height = 0;
    CimgDefs::enType m_type = CimgDefs::enType::none;
    std::size_t m_stride = 0;
    std::vector<std::uint8_t> m_pixels;
};
