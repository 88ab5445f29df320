#include "base/image.h"

std::size_t CimgDefs::bytesPerPixel(enType type) {
    switch (type) {
        case enType::gray8:
            return 1;
        case enType::gray16:
            return 2;
        case enType::rgb24:
            return 3;
        case enType::float32:
            return 4;
        case enType::none:
            break;
    }
    return 0;
}

Cimage::Cimage(int width, int height, CimgDefs::enType type)
    : m_width(width > 0 ? width : 0), m_height(height > 0 ? height : 0), m_type(type) {
    m_stride = static_cast<std::size_t>(m_width) * CimgDefs::bytesPerPixel(type);
    m_pixels.assign(m_stride * static_cast<std::size_t>(m_height), 0);
}
