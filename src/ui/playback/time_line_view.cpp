#include "ui/playback/time_line_view.h"

#include <QDateTime>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::TimeScale;
using orvelle::TimeTick;

namespace {

constexpr int kDefaultValue = 960;
constexpr int kMaxStepsPerMajor = 1000;
constexpr int kZoomHoldMs = 3000;
constexpr int kWheelNotch = 120;
constexpr int kClickPixels = 1;  // a hand moves the mouse as it presses

constexpr QColor kGround(53, 35, 45);
constexpr QColor kTicks(171, 171, 171, 180);
constexpr QColor kMarks(0, 167, 249, 150);
constexpr QColor kUnknown(171, 171, 171, 60);
constexpr QColor kMarked(255, 190, 60, 130);
constexpr QColor kLabels(255, 255, 255, 225);
constexpr QColor kPointer(255, 255, 255, 110);
constexpr QColor kMomentGround(0, 0, 0, 190);
constexpr int kMajorLength = 25;
constexpr int kMinorLength = 15;
constexpr int kMinMarkWidth = 2;  // a minute among days would not be seen
constexpr int kLabelPixels = 11;
constexpr int kLabelHeight = 13;
constexpr int kGrip = 6;
constexpr double kGripHeight = 5.0;
constexpr int kMomentPixels = 11;
constexpr int kMomentHeight = 15;
constexpr int kMomentPadding = 6;
constexpr QSize kSizeHint(480, 56);

int direction(int key) {
    return key == Qt::Key_Left ? -1 : key == Qt::Key_Right ? 1 : 0;
}

}  // namespace

KvTimeLineView::KvTimeLineView(QWidget* parent) : QWidget(parent) {
    qRegisterMetaType<KvTimeLineMark>();
    qRegisterMetaType<QVector<KvTimeLineMark>>();
    m_scale.value = kDefaultValue;
    m_zoomHold.setSingleShot(true);
    m_zoomHold.setInterval(kZoomHoldMs);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setCursor(Qt::OpenHandCursor);
    setAccessibleName(orvelle::text("timeline"));
}

QSize KvTimeLineView::sizeHint() const {
    return kSizeHint;
}

void KvTimeLineView::setMinimum(int minimum) {
    m_minimum = minimum;
    moveTo(value());
}

void KvTimeLineView::setMaximum(int maximum) {
    m_maximum = maximum;
    moveTo(value());
}

void KvTimeLineView::setValue(int value) {
    moveTo(value);
}

void KvTimeLineView::moveTo(qint64 value) {
    m_scale.value = orvelle::limited(value, m_minimum, m_maximum);
    update();
}

void KvTimeLineView::setPixelsPerStep(int pixels) {
    m_scale.pixelsPerStep = qBound(1, pixels, TimeScale::kMaxPixelsPerStep);
    rebaseDrag();
    update();
}

void KvTimeLineView::setStepsPerMajor(int steps) {
    m_stepsPerMajor = qBound(1, steps, kMaxStepsPerMajor);
    update();
}

void KvTimeLineView::setSecondsPerStep(int seconds) {
    m_scale.secondsPerStep = qMax(1, seconds);
    rebaseDrag();
    update();
}

void KvTimeLineView::zoomAt(int x, int secondsPerStep) {
    const qint64 time = scale().timeAt(x);
    m_scale.secondsPerStep = qMax(1, secondsPerStep);
    moveTo(scale().valueFor(time, x));
    rebaseDrag();
}

void KvTimeLineView::setMarks(const QVector<KvTimeLineMark>& marks) {
    m_marks = marks;
    // Mostly they are, and then they stay the caller's.
    if (!std::is_sorted(m_marks.cbegin(), m_marks.cend()))
        std::sort(m_marks.begin(), m_marks.end());
    m_spans = orvelle::spansOf(m_marks);
    update();
}

void KvTimeLineView::setUnknown(const orvelle::TimeSpans& spans) {
    m_unknown = spans;
    update();
}

orvelle::TimeSpan KvTimeLineView::shownSpan() const {
    const TimeScale scale = this->scale();
    return {orvelle::limited(scale.timeAt(0), m_minimum, m_maximum),
            orvelle::limited(scale.timeAt(width()), m_minimum, m_maximum)};
}

TimeScale KvTimeLineView::scale() const {
    TimeScale scale = m_scale;
    scale.width = width();
    return scale;
}

void KvTimeLineView::rebaseDrag() {
    m_valueAtPress = value();
    m_xAtPress = m_mouseX;
}

void KvTimeLineView::mousePressEvent(QMouseEvent* event) {
    m_mouseX = qRound(event->localPos().x());
    if (event->modifiers() & Qt::ShiftModifier) {
        m_isMarking = true;
        m_markedFrom = orvelle::limited(scale().timeAt(m_mouseX), m_minimum, m_maximum);
        setMarkedSpan(std::nullopt);
        return;
    }
    m_dragging = true;
    m_isClick = true;
    rebaseDrag();
    setCursor(Qt::ClosedHandCursor);
    update();
}

void KvTimeLineView::mouseMoveEvent(QMouseEvent* event) {
    m_mouseX = qRound(event->localPos().x());
    if (m_dragging && qAbs(m_mouseX - m_xAtPress) > kClickPixels)
        m_isClick = false;
    if (m_isMarking)
        markUpTo(m_mouseX);
    else if (m_dragging)
        moveTo(m_valueAtPress - m_scale.secondsOf(m_mouseX - m_xAtPress));
    update();
}

void KvTimeLineView::markUpTo(int x) {
    const int time = orvelle::limited(scale().timeAt(x), m_minimum, m_maximum);
    setMarkedSpan(orvelle::TimeSpan{qMin(m_markedFrom, time), qMax(m_markedFrom, time)});
}

void KvTimeLineView::setMarkedSpan(const std::optional<orvelle::TimeSpan>& span) {
    m_marked = span && span->end > span->start ? span : std::nullopt;
    update();
}

void KvTimeLineView::mouseReleaseEvent(QMouseEvent*) {
    m_isMarking = false;
    if (!m_dragging)
        return;
    m_dragging = false;
    m_zoomHold.stop();
    setCursor(Qt::OpenHandCursor);
    // The moment that the line and the label under the mouse have promised.
    if (m_isClick)
        moveTo(m_valueAtPress + m_scale.secondsOf(m_xAtPress - width() / 2));
    update();
    emit valueChangeEnded(value());
}

void KvTimeLineView::leaveEvent(QEvent*) {
    m_mouseX = -1;
    update();
}

void KvTimeLineView::wheelEvent(QWheelEvent* event) {
    const int delta = event->angleDelta().y();
    // A turn the other way starts anew.
    if ((delta < 0) != (m_wheel < 0))
        m_wheel = 0;
    m_wheel += delta;
    const int levels = m_wheel / kWheelNotch;
    m_wheel -= levels * kWheelNotch;
    if (levels == 0)
        return;
    m_zoomHold.start();
    emit zoomRequested(-levels, qRound(event->position().x()));
}

void KvTimeLineView::keyPressEvent(QKeyEvent* event) {
    const bool isFar = event->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier);
    const qint64 step = qint64(secondsPerStep()) * (isFar ? m_stepsPerMajor : 1);
    if (direction(event->key()) != 0)
        m_heldKey = event->key();
    else if ((event->key() == Qt::Key_Home || event->key() == Qt::Key_End) && !m_marks.isEmpty())
        m_heldKey = event->key();
    else
        return QWidget::keyPressEvent(event);
    if (event->key() == Qt::Key_Home)
        moveTo(m_marks.first().start);
    else if (event->key() == Qt::Key_End)
        moveTo(m_marks.last().start);
    else
        moveTo(value() + direction(event->key()) * step);
}

void KvTimeLineView::keyReleaseEvent(QKeyEvent* event) {
    // A held key repeats as pairs of release and press; what is chosen is where it is let go.
    if (event->isAutoRepeat() || m_heldKey == 0 || event->key() != m_heldKey)
        return QWidget::keyReleaseEvent(event);
    m_heldKey = 0;
    m_zoomHold.stop();
    update();
    emit valueChangeEnded(value());
}

void KvTimeLineView::cancelKeys() {
    m_heldKey = 0;
    update();
}

void KvTimeLineView::focusOutEvent(QFocusEvent* event) {
    cancelKeys();
    QWidget::focusOutEvent(event);
}

void KvTimeLineView::hideEvent(QHideEvent* event) {
    m_dragging = false;
    m_isMarking = false;
    m_heldKey = 0;
    m_mouseX = -1;
    setCursor(Qt::OpenHandCursor);
    QWidget::hideEvent(event);
}

void KvTimeLineView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(Qt::black);
    painter.setBrush(kGround);
    painter.drawRect(0, 0, width() - 2, height() - 2);
    paintUnknown(painter);
    const auto ticks = orvelle::visibleTicks(scale(), m_stepsPerMajor, m_minimum, m_maximum);
    paintTicks(painter, ticks);
    paintMarks(painter);
    paintMarked(painter);
    // Above the marks, which would leave nothing of so small a print.
    paintLabels(painter, ticks);
    paintHandle(painter);
    paintMoment(painter);
}

void KvTimeLineView::paintTicks(QPainter& painter, const std::vector<TimeTick>& ticks) const {
    const TimeScale scale = this->scale();
    painter.setPen(kTicks);
    for (const TimeTick& tick : ticks) {
        const int x = static_cast<int>(scale.xOf(tick.time));
        const int length = tick.isMajor ? kMajorLength : kMinorLength;
        painter.drawLine(x, (height() - length) / 2, x, (height() + length) / 2);
    }
}

/// Hatched: neither recorded nor empty.
void KvTimeLineView::paintUnknown(QPainter& painter) const {
    const TimeScale scale = this->scale();
    const qint64 last = scale.timeAt(width());
    for (auto span = orvelle::spanEndingAfter(m_unknown, scale.timeAt(0));
         span != m_unknown.end() && span->start <= last; ++span) {
        const qint64 left = qMax<qint64>(0, scale.xOf(span->start));
        const qint64 right = qMin<qint64>(width() - 1, scale.xOf(span->end));
        painter.fillRect(QRectF(left, 1, right - left, height() - 3),
                         QBrush(kUnknown, Qt::BDiagPattern));
    }
}

void KvTimeLineView::paintMarks(QPainter& painter) const {
    const TimeScale scale = this->scale();
    const qint64 last = scale.timeAt(width());
    qint64 painted = 0;  // up to this pixel; none is painted twice, or the tint would show seams
    for (auto span = orvelle::spanEndingAfter(m_spans, scale.timeAt(0) - 1);
         span != m_spans.end() && span->start <= last; ++span) {
        const qint64 begin = scale.xOf(span->start);
        const qint64 left = qMax(painted, scale.xOf(qMax<qint64>(span->start, m_minimum)));
        const qint64 right =
            qMin<qint64>(width() - 1, qMax(begin + kMinMarkWidth, scale.xOf(span->end)));
        if (left >= right)
            continue;
        painter.fillRect(QRectF(left, 0, right - left, height() - 2), kMarks);
        painted = right;
    }
}

void KvTimeLineView::paintLabels(QPainter& painter, const std::vector<TimeTick>& ticks) const {
    const TimeScale scale = this->scale();
    const int top = qMin((height() + kMajorLength) / 2 + 1, height() - 2 - kLabelHeight);
    painter.setFont(KvWidgetUtils::font(kLabelPixels));
    painter.setPen(kLabels);
    for (const TimeTick& tick : ticks) {
        if (!tick.isMajor)
            continue;
        const QString label = orvelle::tickLabel(tick);
        const int labelWidth = painter.fontMetrics().horizontalAdvance(label);
        const QRect area(static_cast<int>(scale.xOf(tick.time)) - labelWidth / 2, top, labelWidth,
                         kLabelHeight);
        // A cut hour would be read as another one.
        if (area.left() > 1 && area.right() < width() - 3)
            painter.drawText(area, Qt::AlignCenter, label);
    }
}

void KvTimeLineView::paintMarked(QPainter& painter) const {
    if (!m_marked)
        return;
    const TimeScale scale = this->scale();
    const qint64 left = qMax<qint64>(0, scale.xOf(m_marked->start));
    const qint64 right = qMin<qint64>(width() - 1, scale.xOf(m_marked->end));
    if (left < right)
        painter.fillRect(QRectF(left, 0, right - left, height() - 2), kMarked);
}

/// The line of the moment, with a grip at both ends that says that it can be dragged.
void KvTimeLineView::paintHandle(QPainter& painter) const {
    const int x = width() / 2;
    painter.setPen(Qt::white);
    painter.drawLine(x, 0, x, height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    const QPointF top[] = {{x - kGrip + 0.5, 0.0}, {x + kGrip + 0.5, 0.0}, {x + 0.5, kGripHeight}};
    painter.drawPolygon(top, 3);
    painter.restore();
}

/// The exact moment under the mouse, or under the middle line while that is moved.
void KvTimeLineView::paintMoment(QPainter& painter) const {
    const bool isMoving = m_dragging || m_heldKey != 0;
    if (!isMoving && m_mouseX < 0)
        return;
    const int x = isMoving ? width() / 2 : m_mouseX;
    const QString text =
        QDateTime::fromSecsSinceEpoch(scale().timeAt(x)).toString(QStringLiteral("MM/dd HH:mm:ss"));
    painter.setFont(KvWidgetUtils::font(kMomentPixels));
    const int boxWidth = painter.fontMetrics().horizontalAdvance(text) + 2 * kMomentPadding;
    const int left = qMax(1, qMin(x - boxWidth / 2, width() - 2 - boxWidth));
    if (!isMoving) {
        painter.setPen(kPointer);
        painter.drawLine(x, 0, x, height() - 3);
    }
    painter.fillRect(left, 1, boxWidth, kMomentHeight, kMomentGround);
    painter.setPen(Qt::white);
    painter.drawText(QRect(left, 1, boxWidth, kMomentHeight), Qt::AlignCenter, text);
}
