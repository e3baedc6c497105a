#pragma once

#include <QPointF>
#include <QRectF>

#include "render/picture_geometry.h"

namespace orvelle {

/// By how much a picture is magnified in its view, and which part of it is looked at. The picture
/// never leaves the view while it could cover it. A value; points and places are shares of the
/// view, (0, 0) is its top left corner.
class PictureZoom {
public:
    static constexpr double kMaxFactor = 8.0;

    double factor() const { return m_factor; }
    bool isActive() const { return m_factor > 1.0; }

    /// Magnifies `step` times more (less: below 1.0); what is at the point `at` stays there. `fit`
    /// is how the picture fits the view without any zoom, here and below.
    void zoomAt(double step, const QPointF& at, const PictureScale& fit);
    /// The picture follows a movement of the mouse.
    void moveBy(const QPointF& delta, const PictureScale& fit);
    void reset() { *this = {}; }

    /// Where the whole picture lies.
    QRectF place(const PictureScale& fit) const;

    bool operator==(const PictureZoom& other) const {
        return m_factor == other.m_factor && m_centre == other.m_centre;
    }

private:
    double m_factor = 1.0;
    QPointF m_centre{0.5, 0.5};  ///< the point of the picture in the view's middle, in its shares
};

}  // namespace orvelle
