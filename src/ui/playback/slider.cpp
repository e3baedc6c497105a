#include "ui/playback/slider.h"

#include <QMouseEvent>

namespace {

constexpr char kStyle[] =
    "QSlider::groove:horizontal{height:2px;border:none;}"
    "QSlider::sub-page:horizontal{background:#f18d02;}"
    "QSlider::add-page:horizontal{background:#888888;}"
    "QSlider::handle:horizontal{width:11px;margin:-5px 0 -4px 0;"
    "image:url(:/resources/slider_handle.png);}";

}  // namespace

KvSlider::KvSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    setStyleSheet(QLatin1String(kStyle));
    installEventFilter(this);
}

double KvSlider::ratio() const {
    const double range = static_cast<double>(maximum()) - minimum();
    return range > 0 ? (static_cast<double>(value()) - minimum()) / range : 0;
}

void KvSlider::jumpTo(double x) {
    const qint64 place = qBound(0, qRound(x), width());
    const qint64 range = qint64(maximum()) - minimum();
    setValue(static_cast<int>(minimum() + place * range / qMax(1, width())));
}

void KvSlider::setPressed(bool pressed) {
    m_pressed = pressed;
    setSliderDown(pressed);
}

// What the slider itself does with the mouse depends on whether the handle is under it, which it
// need not be when the steps are wide.
bool KvSlider::eventFilter(QObject* watched, QEvent* event) {
    const bool isPress = event->type() == QEvent::MouseButtonPress;
    const bool isMove = event->type() == QEvent::MouseMove && m_pressed;
    const bool isRelease = event->type() == QEvent::MouseButtonRelease && m_pressed;
    if (watched != this || (!isPress && !isMove && !isRelease))
        return QSlider::eventFilter(watched, event);
    if (!isRelease)
        jumpTo(static_cast<QMouseEvent*>(event)->localPos().x());
    if (!isMove)
        setPressed(isPress);
    return true;
}
