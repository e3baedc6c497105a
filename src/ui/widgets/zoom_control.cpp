#include "ui/widgets/zoom_control.h"

#include <QMouseEvent>
#include <QWheelEvent>
#include <QWidget>

#include <cmath>

#include "render/video_surface.h"

namespace orvelle {

namespace {

constexpr double kStep = 1.25;
constexpr double kWheelUnits = 120.0;  // of a mouse's click of the wheel

}  // namespace

ZoomControl::ZoomControl(QWidget* area) : QObject(area), m_area(area) {
    area->installEventFilter(this);
}

void ZoomControl::setEnabled(bool enabled) {
    m_isEnabled = enabled;
    if (!enabled)
        reset();
}

double ZoomControl::factor() const {
    return m_surface ? m_surface->zoom().factor() : 1.0;
}

void ZoomControl::zoomBy(double steps) {
    zoomByWheel(QRectF(m_area->rect()).center(), steps);
}

void ZoomControl::reset() {
    if (!isActive())
        return;
    m_surface->setZoom({});
    m_isMoving = false;
    showHand();
    emit changed(1.0);
}

bool ZoomControl::zoomByWheel(const QPointF& at, double steps) {
    if (!m_isEnabled || !m_surface)
        return false;
    const QWidget& view = m_surface->widget();
    const QPointF inView = at - QPointF(view.mapTo(m_area, QPoint()));
    PictureZoom zoom = m_surface->zoom();
    zoom.zoomAt(std::pow(kStep, steps), {inView.x() / view.width(), inView.y() / view.height()},
                m_surface->fit());
    m_surface->setZoom(zoom);
    showHand();
    emit changed(zoom.factor());
    return true;
}

bool ZoomControl::moveBy(const QPoint& delta) {
    const QSize view = m_surface->widget().size();
    PictureZoom zoom = m_surface->zoom();
    zoom.moveBy({double(delta.x()) / view.width(), double(delta.y()) / view.height()},
                m_surface->fit());
    m_surface->setZoom(zoom);
    return true;
}

void ZoomControl::showHand() {
    if (isActive())
        m_area->setCursor(m_isMoving ? Qt::ClosedHandCursor : Qt::OpenHandCursor);
    else
        m_area->unsetCursor();
}

bool ZoomControl::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_area)
        return false;
    bool isTaken = false;
    switch (event->type()) {
        case QEvent::Wheel: {
            const auto* wheel = static_cast<QWheelEvent*>(event);
            isTaken = zoomByWheel(wheel->position(), wheel->angleDelta().y() / kWheelUnits);
            break;
        }
        case QEvent::MouseButtonPress:
            isTaken = isActive() && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
            m_isMoving = isTaken;
            m_grabbed = static_cast<QMouseEvent*>(event)->pos();
            break;
        case QEvent::MouseMove:
            isTaken = m_isMoving && moveBy(static_cast<QMouseEvent*>(event)->pos() - m_grabbed);
            m_grabbed = static_cast<QMouseEvent*>(event)->pos();
            break;
        case QEvent::MouseButtonRelease:
            isTaken = m_isMoving;
            m_isMoving = false;
            break;
        default:
            return false;
    }
    if (!isTaken)
        return false;
    showHand();
    event->accept();
    return true;
}

}  // namespace orvelle
