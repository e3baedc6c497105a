#include "ui/playback/calendar_view.h"

#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QPushButton>

#include "ui/palette.h"
#include "ui/playback/calendar_day_view.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/menu_style.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::firstOfMonth;
using orvelle::textKey;

namespace {

constexpr int kHeadHeight = 40;
constexpr int kHeadRadius = 10;
constexpr int kArrowSize = 24;
constexpr int kArrowMargin = 12;
constexpr int kWeekdayHeight = 34;
constexpr int kSideMargin = 8;
constexpr int kColumns = 7;
constexpr int kRows = KvCalendarView::kCells / kColumns;
constexpr int kWeekdayPoints = 10;
constexpr int kDayPoints = 12;
constexpr std::array kWeekdayKeys{"sun", "mon", "tue", "wed", "thu", "fri", "sat"};

QFont pointFont(int points) {
    QFont font{QLatin1String(orvelle::palette::kFontFamily)};
    font.setPointSize(points);
    return font;
}

/// Sundays stand in the first column; at least one day of the month before is shown.
QDate firstCellDate(const QDate& month) {
    return month.addDays(-month.dayOfWeek());
}

QPushButton* makeArrow(QWidget* parent, const QString& name, const char* key) {
    auto* arrow = new QPushButton(parent);
    orvelle::ButtonImages images = KvWidgetUtils::imagesOf(name);
    images.normal = KvWidgetUtils::image(name);
    arrow->setStyleSheet(KvWidgetUtils::buttonStyle(images));
    arrow->setCursor(Qt::PointingHandCursor);
    arrow->setAutoDefault(false);
    KvWidgetUtils::setToolTip(arrow, key);
    return arrow;
}

QPushButton* makeYearArrow(QWidget* parent, QChar sign, const char* key) {
    auto* arrow = new QPushButton(sign, parent);
    arrow->setStyleSheet(
        QStringLiteral("QPushButton{border:none;background:transparent;color:#ffffff;}"
                       "QPushButton:disabled{color:#8fd3fb;}"));
    KvWidgetUtils::setFont(arrow, orvelle::palette::kTitleFontPixels);
    arrow->setCursor(Qt::PointingHandCursor);
    arrow->setAutoDefault(false);
    KvWidgetUtils::setToolTip(arrow, key);
    return arrow;
}

}  // namespace

KvCalendarView::KvCalendarView(QWidget* parent) : QWidget(parent) {
    buildHead();
    buildDays();
    setDate(QDate());
}

void KvCalendarView::buildHead() {
    m_prev = makeArrow(this, QStringLiteral("calendar_prev"), textKey("previous_month"));
    m_prevYear = makeYearArrow(this, QChar(0x00AB), textKey("previous_year"));
    m_title = new KvClickLabel(QString(), this);
    m_title->setFocusPolicy(Qt::TabFocus);
    connect(m_title, &KvClickLabel::click, this, &KvCalendarView::offerMonths);
    m_title->setAlignment(Qt::AlignCenter);
    m_title->setStyleSheet(QStringLiteral("QLabel{color:#ffffff;}"));
    KvWidgetUtils::setFont(m_title, orvelle::palette::kTitleFontPixels);
    m_next = makeArrow(this, QStringLiteral("calendar_next"), textKey("next_month"));
    m_nextYear = makeYearArrow(this, QChar(0x00BB), textKey("next_year"));
    connect(m_prevYear, &QPushButton::clicked, this, [this] { goToMonth(-12); });
    connect(m_nextYear, &QPushButton::clicked, this, [this] { goToMonth(12); });
    connect(m_prev, &QPushButton::clicked, this, &KvCalendarView::_onClickPrevButton);
    connect(m_next, &QPushButton::clicked, this, &KvCalendarView::_onClickNextButton);
}

void KvCalendarView::buildDays() {
    for (size_t column = 0; column < m_weekdays.size(); ++column) {
        auto* label = new QLabel(orvelle::text(kWeekdayKeys.at(column)), this);
        label->setAlignment(Qt::AlignCenter);
        label->setFont(pointFont(kWeekdayPoints));
        label->setStyleSheet(
            QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(orvelle::palette::kFaintText)));
        m_weekdays.at(column) = label;
    }
    for (KvCalendarDayView*& cell : m_cells) {
        cell = new KvCalendarDayView(this);
        cell->setFont(pointFont(kDayPoints));
        connect(cell, &KvCalendarDayView::click, this, &KvCalendarView::_onClickCalendarDayView);
    }
}

void KvCalendarView::setDate(const QDate& date) {
    m_date = date;
    m_month = firstOfMonth(date.isValid() ? date : today());
    fill();
}

void KvCalendarView::setMarks(const QVector<KvTimeLineMark>& marks) {
    m_spans = orvelle::spansOf(marks);
    markDays();
}

void KvCalendarView::fill() {
    m_title->setText(m_month.toString(QStringLiteral("yyyy-MM")));
    QDate date = firstCellDate(m_month);
    for (KvCalendarDayView* cell : m_cells) {
        cell->setDate(date);
        cell->setEnabled(firstOfMonth(date) == m_month);
        date = date.addDays(1);
    }
    for (QPushButton* arrow : {m_next, m_nextYear})
        arrow->setEnabled(m_month < firstOfMonth(today()));
    markDays();
    KvCalendarDayView* cell = cellOf(m_date);
    if (!cell)
        cell = cellOf(today());
    letTabReach(cell ? cell : cellOf(m_month));
}

void KvCalendarView::markDays() {
    const std::vector<bool> recorded =
        orvelle::recordedDays(m_spans, firstCellDate(m_month), kCells);
    for (size_t i = 0; i < m_cells.size(); ++i) {
        KvCalendarDayView* cell = m_cells.at(i);
        const QDate date = cell->date();
        cell->setHasRecordings(recorded.at(i));
        cell->setState(date == m_date && recorded.at(i) ? KvCalendarDayView::kSelected
                       : date == today()                ? KvCalendarDayView::kToday
                                                        : KvCalendarDayView::kNormal);
        cell->setToCome(date > today());
        const QString name = date.toString(Qt::ISODate);
        cell->setAccessibleName(
            recorded.at(i) ? name + QStringLiteral(", ") + orvelle::text("has_recordings") : name);
    }
}

/// Tab goes to one day of the month, not through all of them.
void KvCalendarView::letTabReach(KvCalendarDayView* cell) {
    for (KvCalendarDayView* each : m_cells)
        each->setFocusPolicy(each == cell ? Qt::StrongFocus : Qt::ClickFocus);
    setFocusProxy(cell);
}

/// Null for a day of another month.
KvCalendarDayView* KvCalendarView::cellOf(const QDate& date) const {
    if (!date.isValid() || firstOfMonth(date) != m_month)
        return nullptr;
    return m_cells.at(firstCellDate(m_month).daysTo(date));
}

void KvCalendarView::setMonths(const QVector<QDate>& months) {
    m_months = months;
    m_title->setToolTip(months.isEmpty() ? QString() : orvelle::text("months_with_recordings"));
}

void KvCalendarView::offerMonths() {
    if (m_months.isEmpty())
        return;
    QMenu menu(this);
    menu.setStyleSheet(orvelle::menuStyle());
    for (auto month = m_months.crbegin(); month != m_months.crend(); ++month)
        menu.addAction(month->toString(QStringLiteral("yyyy-MM")))->setData(*month);
    const QPointer<KvCalendarView> self(this);
    const QAction* chosen = menu.exec(m_title->mapToGlobal({0, m_title->height()}));
    if (!self || !chosen)
        return;
    const QDate month = chosen->data().toDate();
    goToMonth((month.year() - m_month.year()) * 12 + month.month() - m_month.month());
}

void KvCalendarView::_onClickPrevButton(bool) {
    goToMonth(-1);
}

void KvCalendarView::_onClickNextButton(bool) {
    goToMonth(1);
}

bool KvCalendarView::goToMonth(int months) {
    if (months > 0 && !m_next->isEnabled())
        return false;
    m_month = qMin(m_month.addMonths(months), firstOfMonth(today()));
    fill();
    emit monthChanged(m_month);
    return true;
}

void KvCalendarView::_onClickCalendarDayView() {
    const auto* cell = qobject_cast<KvCalendarDayView*>(sender());
    if (cell && cell->isEnabled())
        choose(cell->date());
}

void KvCalendarView::choose(const QDate& date) {
    m_date = date;
    markDays();
    letTabReach(cellOf(date));
    emit clickCalendar(date);
}

QDate KvCalendarView::focusedDay() const {
    const auto* cell = qobject_cast<KvCalendarDayView*>(focusWidget());
    return cell && cell->hasFocus() ? cell->date() : QDate();
}

/// Invalid for a key that does not move.
QDate KvCalendarView::dayAfterKey(int key) const {
    const QDate day = focusedDay();
    switch (key) {
        case Qt::Key_Left:
            return day.addDays(-1);
        case Qt::Key_Right:
            return day.addDays(1);
        case Qt::Key_Up:
            return day.addDays(-kColumns);
        case Qt::Key_Down:
            return day.addDays(kColumns);
        case Qt::Key_PageUp:
            return day.addMonths(-1);
        case Qt::Key_PageDown:
            return day.addMonths(1);
        default:
            return {};
    }
}

void KvCalendarView::goToDay(const QDate& date) {
    const QDate month = firstOfMonth(date);
    if (month != m_month && !goToMonth(month < m_month ? -1 : 1))
        return;
    KvCalendarDayView* cell = cellOf(date);
    letTabReach(cell);
    cell->setFocus(Qt::ShortcutFocusReason);
}

void KvCalendarView::keyPressEvent(QKeyEvent* event) {
    const QDate day = focusedDay();
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const QDate next = dayAfterKey(event->key());
    if (next.isValid())
        goToDay(next);
    else if (day.isValid() && (event->key() == Qt::Key_Space || (isEnter && day != m_date)))
        choose(day);
    else
        QWidget::keyPressEvent(event);
}

void KvCalendarView::showEvent(QShowEvent*) {
    // Midnight may have passed since.
    fill();
}

void KvCalendarView::resizeEvent(QResizeEvent*) {
    const int arrowTop = (kHeadHeight - kArrowSize) / 2;
    m_prev->setGeometry(kArrowMargin, arrowTop, kArrowSize, kArrowSize);
    m_next->setGeometry(width() - kArrowMargin - kArrowSize, arrowTop, kArrowSize, kArrowSize);
    const int yearLeft = 2 * kArrowMargin + kArrowSize;
    m_prevYear->setGeometry(yearLeft, arrowTop, kArrowSize, kArrowSize);
    m_nextYear->setGeometry(width() - yearLeft - kArrowSize, arrowTop, kArrowSize, kArrowSize);
    const int titleLeft = 3 * kArrowMargin + 2 * kArrowSize;
    m_title->setGeometry(titleLeft, 0, width() - 2 * titleLeft, kHeadHeight);
    const int cellWidth = (width() - 2 * kSideMargin) / kColumns;
    const int left = (width() - kColumns * cellWidth) / 2;
    const int daysTop = kHeadHeight + kWeekdayHeight;
    const int cellHeight = (height() - daysTop - kSideMargin) / kRows;
    for (int column = 0; column < kColumns; ++column)
        m_weekdays.at(column)->setGeometry(left + column * cellWidth, kHeadHeight, cellWidth,
                                           kWeekdayHeight);
    for (int i = 0; i < kCells; ++i)
        m_cells.at(i)->setGeometry(left + i % kColumns * cellWidth,
                                   daysTop + i / kColumns * cellHeight, cellWidth, cellHeight);
}

void KvCalendarView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath card;
    card.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kHeadRadius, kHeadRadius);
    painter.setPen(QColor(orvelle::palette::kFrame));
    painter.setBrush(Qt::white);
    painter.drawPath(card);
    painter.setClipRect(0, 0, width(), kHeadHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(orvelle::palette::kAccent));
    painter.drawRoundedRect(rect(), kHeadRadius, kHeadRadius);
}
