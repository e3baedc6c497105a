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

bool isByKeyboard(Qt::FocusReason reason) {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
           reason == Qt::ShortcutFocusReason;
}

// The focus comes back to where it was when its window does.
bool isReturn(Qt::FocusReason reason) {
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason ||
           reason == Qt::MenuBarFocusReason;
}

}  // namespace

FocusRing::FocusRing(QObject* application) : QObject(application) {
    application->installEventFilter(this);
}

void FocusRing::install() {
    if (!qApp->findChild<FocusRing*>())
        new FocusRing(qApp);
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress)
        m_isMouseInUse = false;
    else if (event->type() == QEvent::MouseButtonPress)
        m_isMouseInUse = true;
    if (event->type() != QEvent::FocusIn || !watched->isWidgetType())
        return false;
    auto* widget = static_cast<QWidget*>(watched);
    const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
    // A field shows its focus with its cursor.
    if (isByKeyboard(reason) && !m_isMouseInUse && !widget->isWindow() &&
        !qobject_cast<QLineEdit*>(widget))
        showAround(widget);
    else if (!isReturn(reason) || (m_frame && m_frame->widget() != widget))
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
