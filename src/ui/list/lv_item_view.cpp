#include "ui/list/lv_item_view.h"

#include <QMouseEvent>
#include <QPainter>

#include "ui/palette.h"

namespace {

constexpr int kClickDelayMs = 100;
constexpr int kBorderWidth = 2;
constexpr QColor kSelectedColour(255, 204, 89);
constexpr QColor kInvisible(0, 0, 0, 0);
constexpr QColor kHoverColour(0xa8, 0xa8, 0xa8);
constexpr qreal kBorderInset = 1;
constexpr qreal kRingInset = 3;
constexpr qreal kHoverInset = 0.5;

bool isClickButton(int button) {
    return button == Qt::LeftButton || button == Qt::RightButton;
}

}  // namespace

KvLVItemView::KvLVItemView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_Hover);
    m_clickTimer.setSingleShot(true);
    m_clickTimer.setInterval(kClickDelayMs);
    connect(&m_clickTimer, &QTimer::timeout, this, &KvLVItemView::_invokeClickTimer);
}

void KvLVItemView::applySelection() {
    setBorder(kBorderWidth, m_isSelected ? kSelectedColour : kInvisible);
}

bool KvLVItemView::handleKey(int /*key*/) {
    return false;
}

void KvLVItemView::setSelected(bool selected) {
    if (m_isSelected == selected)
        return;
    m_isSelected = selected;
    applySelection();
}

void KvLVItemView::setHasRing(bool hasRing) {
    if (m_hasRing == hasRing)
        return;
    m_hasRing = hasRing;
    update();
}

void KvLVItemView::setBackgroundColor(const QColor& colour) {
    m_background = colour;
    update();
}

void KvLVItemView::setBorder(int width, const QColor& colour) {
    m_borderWidth = width;
    m_borderColour = colour;
    update();
}

void KvLVItemView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    if (m_background.alpha() != 0)
        painter.fillRect(rect(), m_background);
    if (underMouse())
        drawOutline(painter, 1, kHoverColour, kHoverInset);
    drawOutline(painter, m_borderWidth, m_borderColour, kBorderInset);
    if (m_hasRing)
        drawOutline(painter, kBorderWidth, QColor(QLatin1String(orvelle::palette::kAccent)),
                    m_isSelected ? kRingInset : kBorderInset);
}

void KvLVItemView::drawOutline(QPainter& painter, int width, const QColor& colour,
                               qreal inset) const {
    if (width <= 0 || colour.alpha() == 0)
        return;
    QPen pen(colour, width);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset));
}

void KvLVItemView::mousePressEvent(QMouseEvent* event) {
    if (isClickButton(event->button()))
        ++m_pressCount;
    else
        QWidget::mousePressEvent(event);
}

void KvLVItemView::mouseReleaseEvent(QMouseEvent* event) {
    if (m_pressCount == 0 || !isClickButton(event->button()))
        return;
    m_releasePosition = event->localPos();
    if (holds(m_releasePosition))
        countRelease(event->button());
    else if (!m_clickTimer.isActive())
        clearClicks();
}

bool KvLVItemView::holds(const QPointF& position) const {
    return position.x() >= 0 && position.x() <= width() && position.y() >= 0 &&
           position.y() <= height();
}

void KvLVItemView::countRelease(int button) {
    if (m_pendingButton == Qt::NoButton)
        m_pendingButton = button;
    if (m_pendingButton != button) {
        _invokeClickTimer();
        m_pendingButton = button;
        _invokeClickTimer();
    } else if (button == Qt::RightButton) {
        _invokeClickTimer();
    } else if (m_pressCount == 1) {
        m_clickTimer.start();
    } else {
        clearClicks();
        emit doubleClickItemView(this);
    }
}

void KvLVItemView::_invokeClickTimer() {
    const int button = m_pendingButton;
    clearClicks();
    if (button == Qt::LeftButton)
        emit clickItemView(this);
    else if (button == Qt::RightButton)
        emit rightClickItemView(this, qRound(m_releasePosition.x()), qRound(m_releasePosition.y()));
}

void KvLVItemView::clearClicks() {
    m_clickTimer.stop();
    m_pendingButton = Qt::NoButton;
    m_pressCount = 0;
}
