#include "ui/widgets/focus_ring.h"

#include <QApplication>
#include <QFocusEvent>
#include <QLineEdit>
#include <QPainter>
#include <QProxyStyle>

#include "ui/palette.h"

namespace orvelle {

namespace {

constexpr int kWidth = 3;

/// Tells the frame how wide the ring is.
class RingStyle : public QProxyStyle {
public:
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override {
        if (metric == PM_FocusFrameHMargin || metric == PM_FocusFrameVMargin)
            return kWidth;
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
};

class RingFrame : public QFocusFrame {
public:
    RingFrame() {
        auto* style = new RingStyle;
        style->setParent(this);
        setStyle(style);
    }

    // A button that changes its images on being pressed has a new style, and still the focus.
    bool eventFilter(QObject* watched, QEvent* event) override {
        return event->type() != QEvent::StyleChange && QFocusFrame::eventFilter(watched, event);
    }

protected:
    // A dark line with a light one inside stands out from every ground.
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(rect(), Qt::white);
        painter.setPen(QPen(QColor(palette::kFocusRing), 4));
        painter.drawRect(rect());
    }
};

}  // namespace

FocusRing::FocusRing(QObject* application) : QObject(application) {
    application->installEventFilter(this);
}

void FocusRing::install() {
    if (!qApp->findChild<FocusRing*>())
        new FocusRing(qApp);
}

bool FocusRing::isKeyboardInUse() {
    const auto* ring = qApp->findChild<FocusRing*>();
    return ring && ring->m_isKeyboardInUse;
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        m_isKeyboardInUse = true;
    } else if (event->type() == QEvent::MouseButtonPress && m_isKeyboardInUse) {
        m_isKeyboardInUse = false;
        hide();
    }
    if (event->type() != QEvent::FocusIn || !watched->isWidgetType())
        return false;
    auto* widget = static_cast<QWidget*>(watched);
    const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
    // A field shows its focus with its cursor.
    if (m_isKeyboardInUse && reason != Qt::MouseFocusReason && !widget->isWindow() &&
        !qobject_cast<QLineEdit*>(widget))
        showAround(widget);
    else
        hide();
    return false;
}

void FocusRing::showAround(QWidget* widget) {
    if (!m_frame)
        m_frame = new RingFrame;
    m_frame->setWidget(widget);
}

void FocusRing::hide() {
    if (m_frame)
        m_frame->setWidget(nullptr);
}

}  // namespace orvelle
