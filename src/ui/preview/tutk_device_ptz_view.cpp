#include "ui/preview/tutk_device_ptz_view.h"

#include <QKeyEvent>
#include <QPainter>

#include <array>

#include "device/device_messages.h"
#include "device/tutk_device.h"

using orvelle::SMsgAVIoctrlPtzCmd;

namespace {

constexpr QColor kDiscColour(255, 255, 255, 127);
constexpr QColor kIdleColour(255, 255, 255);
constexpr QColor kTurningColour(255, 224, 18);
constexpr QColor kOutlineColour(0, 0, 0, 130);  // or a bright sky swallows disc and arrows
constexpr double kOutlineWidth = 0.025;         // in shares of the disc's radius
// In shares of the disc's radius, seen from its centre.
constexpr double kTipDistance = 0.86;
constexpr double kBaseDistance = 0.62;
constexpr double kHalfBase = 0.2;

/// Clockwise from the top, a quarter turn each.
constexpr std::array kArrows{SMsgAVIoctrlPtzCmd::kUp, SMsgAVIoctrlPtzCmd::kRight,
                             SMsgAVIoctrlPtzCmd::kDown, SMsgAVIoctrlPtzCmd::kLeft};

int directionOfKey(int key) {
    switch (key) {
        case Qt::Key_Left:
            return SMsgAVIoctrlPtzCmd::kLeft;
        case Qt::Key_Right:
            return SMsgAVIoctrlPtzCmd::kRight;
        case Qt::Key_Up:
            return SMsgAVIoctrlPtzCmd::kUp;
        case Qt::Key_Down:
            return SMsgAVIoctrlPtzCmd::kDown;
        default:
            return SMsgAVIoctrlPtzCmd::kNone;
    }
}

}  // namespace

KvTUTKDevicePTZView::KvTUTKDevicePTZView(QWidget* parent, KvDevice* device) : QWidget(parent) {
    setDevice(device);
}

KvTUTKDevicePTZView::~KvTUTKDevicePTZView() {
    stopTurning();
}

void KvTUTKDevicePTZView::setDevice(KvDevice* device) {
    auto* turnable = qobject_cast<KvTUTKDevice*>(device);
    if (device && !turnable)
        return;
    stopTurning();
    m_device = turnable;
}

void KvTUTKDevicePTZView::stopTurning() {
    if (m_direction == SMsgAVIoctrlPtzCmd::kNone)
        return;
    turn(SMsgAVIoctrlPtzCmd::kNone);
}

void KvTUTKDevicePTZView::turn(int direction) {
    m_direction = direction;
    sendPtz(direction);
    update();
}

void KvTUTKDevicePTZView::sendPtz(int direction) {
    if (!m_device)
        return;
    const auto command = SMsgAVIoctrlPtzCmd::move(direction, m_device->channel());
    qDebug("SMsgAVIoctrlPtzCmd.control = %d, direction = %d", command.control, direction);
    const QByteArray payload = command.encode();
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_PTZ_COMMAND, payload.constData(), payload.size());
}

/// The columns win over the rows, so a corner is left or right.
int KvTUTKDevicePTZView::zoneAt(const QPointF& position) const {
    const int x = qRound(position.x());
    const int y = qRound(position.y());
    if (x >= 0 && x < width() / 3)
        return SMsgAVIoctrlPtzCmd::kLeft;
    if (x >= 2 * width() / 3 && x < width())
        return SMsgAVIoctrlPtzCmd::kRight;
    if (y >= 0 && y < height() / 3)
        return SMsgAVIoctrlPtzCmd::kUp;
    if (y >= 2 * height() / 3 && y < height())
        return SMsgAVIoctrlPtzCmd::kDown;
    return SMsgAVIoctrlPtzCmd::kNone;
}

void KvTUTKDevicePTZView::mousePressEvent(QMouseEvent* event) {
    turn(zoneAt(event->localPos()));
}

void KvTUTKDevicePTZView::mouseMoveEvent(QMouseEvent* event) {
    const int zone = zoneAt(event->localPos());
    if (event->buttons() == Qt::NoButton || zone == m_direction)
        return;
    sendPtz(SMsgAVIoctrlPtzCmd::kNone);
    turn(zone);
}

void KvTUTKDevicePTZView::mouseReleaseEvent(QMouseEvent*) {
    turn(SMsgAVIoctrlPtzCmd::kNone);
}

void KvTUTKDevicePTZView::keyPressEvent(QKeyEvent* event) {
    const int direction = directionOfKey(event->key());
    if (direction == SMsgAVIoctrlPtzCmd::kNone)
        QWidget::keyPressEvent(event);
    else
        turn(direction);
}

void KvTUTKDevicePTZView::keyReleaseEvent(QKeyEvent* event) {
    // A held key repeats as pairs of release and press.
    if (!event->isAutoRepeat())
        turn(SMsgAVIoctrlPtzCmd::kNone);
}

void KvTUTKDevicePTZView::focusOutEvent(QFocusEvent* event) {
    stopTurning();
    QWidget::focusOutEvent(event);
}

void KvTUTKDevicePTZView::hideEvent(QHideEvent* event) {
    stopTurning();
    QWidget::hideEvent(event);
}

void KvTUTKDevicePTZView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(kOutlineColour);
    painter.setBrush(kDiscColour);
    const QSizeF disc((width() - 1) / 2 * 2, (height() - 1) / 2 * 2);
    painter.drawEllipse(QRectF(QPointF(0.5, 0.5), disc));

    painter.setPen(
        QPen(kOutlineColour, kOutlineWidth, Qt::SolidLine, Qt::SquareCap, Qt::RoundJoin));
    painter.translate(0.5 + disc.width() / 2, 0.5 + disc.height() / 2);
    painter.scale(disc.width() / 2, disc.height() / 2);
    const QPolygonF arrow{QVector<QPointF>{
        {0.0, -kTipDistance}, {kHalfBase, -kBaseDistance}, {-kHalfBase, -kBaseDistance}}};
    for (const int direction : kArrows) {
        painter.setBrush(m_direction & direction ? kTurningColour : kIdleColour);
        painter.drawPolygon(arrow);
        painter.rotate(90);
    }
}
