#include "ui/widgets/widget.h"

#include <QPainter>

KvWidget::KvWidget(QWidget* parent) : QWidget(parent) {}

void KvWidget::setBackgroundColor(const QColor& color) {
    m_backgroundColor = color;
    update();
}

void KvWidget::setBackgroundColor(unsigned rgb, int alpha) {
    QColor color(static_cast<QRgb>(rgb));
    color.setAlpha(qBound(0, alpha, 255));
    setBackgroundColor(color);
}

void KvWidget::setBorder(int width, int radius) {
    m_borderWidth = width;
    m_borderRadius = radius;
    update();
}

void KvWidget::setBorder(int width, int radius, const QColor& color) {
    m_borderColor = color;
    setBorder(width, radius);
}

void KvWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area(0, 0, width(), height());
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_backgroundColor);
    painter.drawRoundedRect(area, m_borderRadius, m_borderRadius);
    if (m_borderWidth <= 0)
        return;
    // The line lies inside the widget, else its outer half would be cut off.
    const qreal half = m_borderWidth / 2.0;
    painter.setPen(QPen(m_borderColor, m_borderWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(area.adjusted(half, half, -half, -half), m_borderRadius,
                            m_borderRadius);
}
