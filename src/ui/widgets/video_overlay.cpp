#include "ui/widgets/video_overlay.h"

#include <QApplication>
#include <QFocusEvent>

#include <algorithm>

#include "ui/widgets/focus_ring.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr int kShownMs = 3000;

}  // namespace

VideoOverlay::VideoOverlay(QWidget* view, QWidget* ground)
    : QObject(ground), m_view(view), m_ground(ground), m_notice(new PictureNotice(ground)) {
    m_timer.setInterval(kShownMs);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &VideoOverlay::rest);
    // Reports the mouse over the children too, which take its moves.
    view->setAttribute(Qt::WA_Hover);
    view->installEventFilter(this);
}

VideoOverlay::~VideoOverlay() {
    m_cover.hideOver();
}

void VideoOverlay::setParts(const QVector<QWidget*>& parts, const QVector<QWidget*>& bars) {
    m_parts = parts;
    m_bars = bars;
    m_keepers += bars;
    for (QWidget* bar : bars) {
        // A double click on it is none on the picture.
        bar->setAttribute(Qt::WA_NoMousePropagation);
        bar->setVisible(m_areBarsShown);
    }
}

void VideoOverlay::setEnabled(bool enabled) {
    m_isEnabled = enabled;
    if (!enabled)
        rest();
}

void VideoOverlay::wake() {
    if (!m_isEnabled)
        return;
    setBarsShown(true);
    m_timer.start();
}

void VideoOverlay::rest() {
    if (m_isEnabled && areBarsInUse()) {
        m_timer.start();
        return;
    }
    m_timer.stop();
    setBarsShown(false);
}

void VideoOverlay::setBarsShown(bool shown) {
    if (m_areBarsShown == shown)
        return;
    m_areBarsShown = shown;
    for (QWidget* bar : qAsConst(m_bars))
        bar->setVisible(shown);
    emit barsChanged(shown);
}

bool VideoOverlay::areBarsInUse() const {
    // The window's own, which is where the focus comes back to from a dialog.
    const QWidget* focused = m_ground->window()->focusWidget();
    const bool hasFocus = std::any_of(m_keepers.begin(), m_keepers.end(), [focused](QWidget* part) {
        return part->isAncestorOf(focused);
    });
    const bool hasMouse = std::any_of(m_bars.begin(), m_bars.end(),
                                      [](QWidget* bar) { return KvWidgetUtils::isMouseIn(*bar); });
    // A slider may be dragged from outside the bar as well.
    return hasFocus || hasMouse || QApplication::mouseButtons() != Qt::NoButton;
}

void VideoOverlay::showCover(const QString& text) {
    m_cover.setText(text);
    if (m_cover.isOver())
        return;
    m_cover.showOver(m_ground, m_ground->rect());
    m_notice->raise();
    for (QWidget* part : qAsConst(m_parts))
        part->raise();
}

void VideoOverlay::hideCover() {
    m_cover.hideOver();
}

void VideoOverlay::layOut() {
    if (m_cover.isOver())
        m_cover.setGeometry(m_ground->rect());
    m_notice->setGeometry(m_ground->rect());
}

bool VideoOverlay::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_view)
        return false;
    switch (event->type()) {
        case QEvent::HoverEnter:
        case QEvent::HoverMove:
            wake();
            break;
        case QEvent::HoverLeave:
            rest();
            break;
        case QEvent::FocusIn:
            // The bars' buttons come next, and what is hidden gets no focus.
            if (static_cast<QFocusEvent*>(event)->reason() != Qt::MouseFocusReason &&
                FocusRing::isKeyboardInUse())
                wake();
            break;
        default:
            break;
    }
    return false;
}

}  // namespace orvelle
