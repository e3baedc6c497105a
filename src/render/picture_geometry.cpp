#include "render/picture_geometry.h"

#include <cstdint>

namespace orvelle {

PictureScale fitPicture(int pictureWidth, int pictureHeight, int viewWidth, int viewHeight) {
    PictureScale scale;
    if (pictureWidth < 1 || pictureHeight < 1 || viewWidth < 1 || viewHeight < 1)
        return scale;
    const int64_t heightForWidth = int64_t{pictureHeight} * viewWidth;
    const int64_t widthForHeight = int64_t{pictureWidth} * viewHeight;
    if (heightForWidth < widthForHeight)
        scale.y = static_cast<double>(heightForWidth) / static_cast<double>(widthForHeight);
    else
        scale.x = static_cast<double>(widthForHeight) / static_cast<double>(heightForWidth);
    return scale;
}

std::array<float, 8> pictureCorners(const QRectF& place) {
    const auto left = static_cast<float>(2.0 * place.left() - 1.0);
    const auto right = static_cast<float>(2.0 * place.right() - 1.0);
    const auto top = static_cast<float>(1.0 - 2.0 * place.top());
    const auto bottom = static_cast<float>(1.0 - 2.0 * place.bottom());
    return {left, bottom, right, bottom, left, top, right, top};
}

}  // namespace orvelle
