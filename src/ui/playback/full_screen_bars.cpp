#include "ui/playback/full_screen_bars.h"

#include <QApplication>
#include <QFocusEvent>

#include "ui/playback/sdcard_playback_view_ui.h"
#include "ui/playback/time_line_view.h"
#include "ui/playback/video_time_line_view.h"
#include "ui/widgets/focus_ring.h"

namespace orvelle {

namespace {

constexpr int kShownMs = 3000;

}  // namespace

FullScreenBars::FullScreenBars(QWidget* view, KvSDCardPlaybackViewUI* ui)
    : QObject(view), m_view(view), m_ui(ui) {
    m_timer.setInterval(kShownMs);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &FullScreenBars::hide);
    // Reports the mouse over the children too, which take its moves.
    view->setAttribute(Qt::WA_Hover);
    view->installEventFilter(this);
}

void FullScreenBars::setFullscreen(bool fullscreen) {
    m_ui->setOverlaid(fullscreen);
    wake();
}

void FullScreenBars::wake() {
    m_ui->setBarsVisible(true);
    if (m_ui->isOverlaid())
        m_timer.start();
}

void FullScreenBars::hide() {
    // The timeline keeps the focus of a click; its keys reach it from the view as well.
    if (m_ui->timeLine()->timeLine()->hasFocus())
        m_view->setFocus(Qt::OtherFocusReason);
    if (m_ui->hasFocusInBars() || m_ui->isMouseInBars() ||
        QApplication::mouseButtons() != Qt::NoButton)
        wake();
    else
        m_ui->setBarsVisible(false);
}

bool FullScreenBars::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverMove)
        wake();
    if (event->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        // The bars' buttons come next, and what is hidden gets no focus.
        if (reason != Qt::MouseFocusReason && FocusRing::isKeyboardInUse())
            wake();
    }
    return false;
}

}  // namespace orvelle
