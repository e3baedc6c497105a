#include "ui/widgets/clicker.h"

#include <QMouseEvent>

namespace {

constexpr int kClickMs = 200;

bool isInside(const QWidget& widget, const QPointF& position) {
    return position.x() >= 0 && position.x() <= widget.width() && position.y() >= 0 &&
           position.y() <= widget.height();
}

}  // namespace

KvClicker::KvClicker(QObject* parent) : QObject(parent) {
    m_clickTimer.setSingleShot(true);
    m_clickTimer.setInterval(kClickMs);
    connect(&m_clickTimer, &QTimer::timeout, this, &KvClicker::_invokeClickTimer);
}

KvClicker::KvClicker(QWidget* target, QObject* parent) : KvClicker(parent) {
    setTarget(target);
}

void KvClicker::setTarget(QWidget* target) {
    if (m_target)
        m_target->removeEventFilter(this);
    forget();
    m_pressed = false;
    m_target = target;
    if (m_target)
        m_target->installEventFilter(this);
}

bool KvClicker::eventFilter(QObject* watched, QEvent* event) {
    if (!m_target || watched != m_target)
        return false;
    // The second press of a quick pair comes as a double click.
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick) {
        m_pressed = true;
    } else if (event->type() == QEvent::MouseButtonRelease && m_pressed) {
        const auto* release = static_cast<QMouseEvent*>(event);
        m_pressed = false;
        m_releasePosition = release->localPos();
        onRelease(release->button());
    }
    return false;
}

void KvClicker::onRelease(Qt::MouseButton button) {
    if (!isInside(*m_target, m_releasePosition)) {
        forget();
    } else if (button == Qt::RightButton) {
        forget();
        emit rightClick(qRound(m_releasePosition.x()), qRound(m_releasePosition.y()));
    } else if (button == Qt::LeftButton && ++m_releases == 2) {
        forget();
        emit doubleClick();
    } else if (button == Qt::LeftButton) {
        m_clickTimer.start();
    }
}

void KvClicker::forget() {
    m_clickTimer.stop();
    m_releases = 0;
}

void KvClicker::_invokeClickTimer() {
    forget();
    emit click();
}
