#include <QApplication>
#include <QHoverEvent>
#include <QKeyEvent>

#include "ui/playback/sdcard_playback_view.h"
#include "ui/playback/time_line_view.h"
#include "ui/playback/video_time_line_view.h"
#include "ui/widgets/focus_ring.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

// Full screen, the bars on it, and the keys.

using orvelle::textKey;
using UI = KvSDCardPlaybackViewUI;

bool KvSDCardPlaybackView::isFullscreen() const {
    return m_ui->button(UI::kFullscreen)->state() != 0;
}

void KvSDCardPlaybackView::exitsFullscreen() {
    setFullscreen(false);
}

void KvSDCardPlaybackView::_onClickFull(bool) {
    const bool wasFullscreen = window()->isFullScreen();
    setFullscreen(!wasFullscreen);
    emit requestFullscreen(!wasFullscreen);
}

void KvSDCardPlaybackView::_onDoubleClickVideoView() {
    _onClickFull(false);
}

void KvSDCardPlaybackView::setFullscreen(bool fullscreen) {
    KvPushButton* button = m_ui->button(UI::kFullscreen);
    button->setState(fullscreen ? 1 : 0);
    KvWidgetUtils::setToolTip(button, fullscreen ? textKey("minimized") : textKey("maximized"));
    m_ui->setOverlaid(fullscreen);
    wakeBars();
}

void KvSDCardPlaybackView::wakeBars() {
    m_ui->setBarsVisible(true);
    if (m_ui->isOverlaid())
        m_barsTimer.start();
}

void KvSDCardPlaybackView::hideBars() {
    // The timeline keeps the focus of a click; its keys reach it from here as well.
    if (m_ui->timeLine()->timeLine()->hasFocus())
        setFocus(Qt::OtherFocusReason);
    if (m_ui->hasFocusInBars() || m_ui->isMouseInBars() ||
        QApplication::mouseButtons() != Qt::NoButton)
        wakeBars();
    else
        m_ui->setBarsVisible(false);
}

bool KvSDCardPlaybackView::event(QEvent* event) {
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverMove)
        wakeBars();
    // A key that is let go elsewhere must not hold the timeline for ever.
    if ((event->type() == QEvent::FocusOut && !m_isPassingKey) ||
        event->type() == QEvent::WindowDeactivate)
        m_ui->timeLine()->timeLine()->cancelKeys();
    if (event->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        // The bars' buttons come next, and what is hidden gets no focus.
        if (reason != Qt::MouseFocusReason && orvelle::FocusRing::isKeyboardInUse())
            wakeBars();
    }
    return QWidget::event(event);
}

/// The bars may have left since the focus came.
bool KvSDCardPlaybackView::focusNextPrevChild(bool next) {
    if (orvelle::FocusRing::isKeyboardInUse())
        wakeBars();
    return QWidget::focusNextPrevChild(next);
}

void KvSDCardPlaybackView::resizeEvent(QResizeEvent*) {
    m_ui->setGeometry(rect());
}

void KvSDCardPlaybackView::keyPressEvent(QKeyEvent* event) {
    KvVideoTimeLineView* timeLine = m_ui->timeLine();
    if (event->key() == Qt::Key_Escape && window()->isFullScreen()) {
        _onClickFull(false);
    } else if (event->key() == Qt::Key_Space && m_device && !m_ui->isNoCardShown()) {
        if (event->isAutoRepeat())
            return;
        wakeBars();
        timeLine->setPlayChecked(!timeLine->isPlayChecked());
        _onClickPlay(timeLine->isPlayChecked());
    } else if (!passToTimeLine(event)) {
        QWidget::keyPressEvent(event);
    }
}

void KvSDCardPlaybackView::keyReleaseEvent(QKeyEvent* event) {
    if (!passToTimeLine(event))
        QWidget::keyReleaseEvent(event);
}

/// A key that the timeline does not want comes back here, as to its parent.
bool KvSDCardPlaybackView::passToTimeLine(QKeyEvent* event) {
    if (m_isPassingKey || !m_device || m_ui->isNoCardShown())
        return false;
    m_isPassingKey = true;
    QCoreApplication::sendEvent(m_ui->timeLine()->timeLine(), event);
    m_isPassingKey = false;
    if (event->isAccepted() && event->type() == QEvent::KeyPress)
        wakeBars();
    return event->isAccepted();
}
