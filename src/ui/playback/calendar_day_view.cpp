#include "ui/playback/calendar_day_view.h"

#include <QMouseEvent>
#include <QPainter>

#include "ui/palette.h"

namespace {

constexpr double kShapeSize = 28;
constexpr double kShapeRadius = 6;
constexpr double kDotSize = 4;
constexpr double kDotGap = 2;
constexpr QColor kDisabledNumber(96, 96, 96);
constexpr QColor kToCome(185, 185, 185);

}  // namespace

KvCalendarDayView::KvCalendarDayView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_Hover);
}

void KvCalendarDayView::setDate(const QDate& date) {
    m_date = date;
    update();
}

void KvCalendarDayView::setState(int state) {
    m_state = state;
    update();
}

void KvCalendarDayView::setHasRecordings(bool has) {
    m_hasRecordings = has;
    update();
}

void KvCalendarDayView::setToCome(bool isToCome) {
    m_isToCome = isToCome;
    update();
}

void KvCalendarDayView::mouseReleaseEvent(QMouseEvent* event) {
    if (rect().contains(event->pos()))
        emit click();
}

/// Number and dot together stand in the middle of the cell.
QRectF KvCalendarDayView::shape() const {
    return {(width() - kShapeSize) / 2, (height() - kShapeSize - kDotGap - kDotSize) / 2,
            kShapeSize, kShapeSize};
}

void KvCalendarDayView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintShape(painter);
    paintNumber(painter);
    if (!m_hasRecordings)
        return;
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(orvelle::palette::kAccent));
    const QPointF corner((width() - kDotSize) / 2, shape().bottom() + kDotGap);
    painter.drawRoundedRect(QRectF(corner, QSizeF(kDotSize, kDotSize)), kDotSize / 2, kDotSize / 2);
}

void KvCalendarDayView::paintShape(QPainter& painter) const {
    const QColor accent(orvelle::palette::kAccent);
    painter.setPen(Qt::NoPen);
    if (m_state == kSelected) {
        painter.setBrush(accent);
        painter.drawRoundedRect(shape(), kShapeRadius, kShapeRadius);
        return;
    }
    if (isEnabled() && (underMouse() || m_hasRecordings)) {
        painter.setBrush(QColor(orvelle::palette::kAccentTint));
        painter.drawRoundedRect(shape(), kShapeRadius, kShapeRadius);
    }
    if (m_state == kToday) {
        painter.setPen(accent);
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(shape().adjusted(0.5, 0.5, -0.5, -0.5));
    }
}

void KvCalendarDayView::paintNumber(QPainter& painter) const {
    QFont number = font();
    number.setWeight(m_state == kToday ? QFont::Bold : QFont::Normal);
    painter.setFont(number);
    painter.setPen(m_isToCome             ? kToCome
                   : !isEnabled()         ? kDisabledNumber
                   : m_state == kSelected ? QColor(Qt::white)
                                          : QColor(Qt::black));
    painter.drawText(shape(), Qt::AlignCenter, QString::number(m_date.day()));
}
