#include "render/picture_zoom.h"

#include <algorithm>

namespace orvelle {
namespace {

/// The start of a side of `length` that has `centre` of itself in the view's middle, as far as no
/// gap opens.
double startOf(double length, double centre) {
    if (length <= 1.0)
        return (1.0 - length) / 2.0;
    return std::clamp(0.5 - centre * length, 1.0 - length, 0.0);
}

QPointF centreOf(const QRectF& place) {
    return {(0.5 - place.left()) / place.width(), (0.5 - place.top()) / place.height()};
}

}  // namespace

QRectF PictureZoom::place(const PictureScale& fit) const {
    const double width = fit.x * m_factor;
    const double height = fit.y * m_factor;
    return {startOf(width, m_centre.x()), startOf(height, m_centre.y()), width, height};
}

void PictureZoom::zoomAt(double step, const QPointF& at, const PictureScale& fit) {
    const QRectF before = place(fit);
    const QPointF point((at.x() - before.left()) / before.width(),
                        (at.y() - before.top()) / before.height());
    m_factor = std::clamp(m_factor * step, 1.0, kMaxFactor);
    const QPointF wanted((0.5 - at.x()) / (fit.x * m_factor), (0.5 - at.y()) / (fit.y * m_factor));
    m_centre = point + wanted;
    m_centre = centreOf(place(fit));
}

void PictureZoom::moveBy(const QPointF& delta, const PictureScale& fit) {
    m_centre -= QPointF(delta.x() / (fit.x * m_factor), delta.y() / (fit.y * m_factor));
    m_centre = centreOf(place(fit));
}

}  // namespace orvelle
