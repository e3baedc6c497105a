#include "frames/yuv_data.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

// The view adds no offset to luma, so its black is 0 rather than the broadcast level 16.
constexpr int kBlackLuma = 0;
constexpr int kNeutralChroma = 128;

}  // namespace

KvYUV420P::KvYUV420P(const uint8_t* const planes[3], int width, int height, const int strides[3])
    : KvYUVData(width, height) {
    if (!planes || !planes[0] || !planes[1] || !planes[2] || width < 1 || height < 1)
        return;
    const int halfWidth = width / 2;
    const int halfHeight = height / 2;
    Plane y = copyPlane(planes[0], width, height, strides ? strides[0] : width, kBlackLuma);
    Plane u = copyPlane(planes[1], halfWidth, halfHeight, strides ? strides[1] : halfWidth,
                        kNeutralChroma);
    Plane v = copyPlane(planes[2], halfWidth, halfHeight, strides ? strides[2] : halfWidth,
                        kNeutralChroma);
    if (!y || !u || !v)
        return;
    m_y = std::move(y);
    m_u = std::move(u);
    m_v = std::move(v);
}

KvYUV420P::Plane KvYUV420P::copyPlane(const uint8_t* source, int width, int height, int stride,
                                      int black) {
    const size_t rowBytes = static_cast<size_t>(width);
    const size_t planeBytes = rowBytes * static_cast<size_t>(height);
    // One byte at least: a picture one pixel wide has no chroma, yet is not a null picture.
    Plane plane(static_cast<uint8_t*>(std::malloc(std::max<size_t>(planeBytes, 1))));
    if (!plane)
        return plane;
    if (stride == width) {
        std::memcpy(plane.get(), source, planeBytes);
        return plane;
    }
    const size_t copied = std::min(rowBytes, static_cast<size_t>(std::abs(stride)));
    for (int row = 0; row < height; ++row) {
        uint8_t* target = plane.get() + static_cast<size_t>(row) * rowBytes;
        std::memcpy(target, source + static_cast<ptrdiff_t>(row) * stride, copied);
        std::memset(target + copied, black, rowBytes - copied);
    }
    return plane;
}
