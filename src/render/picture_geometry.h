#pragma once

#include <QRectF>

#include <array>

namespace orvelle {

/// The share of a view's width and height that a picture covers, 1.0 on the axis that it fills.
struct PictureScale {
    double x = 1.0;
    double y = 1.0;
};

/// Fits a picture into a view with its proportions kept; sizes in any one unit. A side below 1
/// gives (1.0, 1.0).
PictureScale fitPicture(int pictureWidth, int pictureHeight, int viewWidth, int viewHeight);

/// The (x, y) clip-space corners of a place in shares of the view, in strip order: bottom-left,
/// bottom-right, top-left, top-right.
std::array<float, 8> pictureCorners(const QRectF& place);

}  // namespace orvelle
