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

std::array<float, 8> pictureCorners(const PictureScale& scale) {
    const float x = static_cast<float>(scale.x);
    const float y = static_cast<float>(scale.y);
    return {-x, -y, x, -y, -x, y, x, y};
}

}  // namespace orvelle
