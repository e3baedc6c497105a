#include "ui/playback/calendar_dialog.h"

#include <QPushButton>

#include "ui/palette.h"
#include "ui/playback/calendar_view.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr QSize kSize(372, 456);
constexpr QRect kCloseArea(338, 10, 24, 24);
constexpr QRect kCalendarArea(24, 44, 324, 334);
constexpr QRect kTodayArea(72, 398, 108, 34);
constexpr QRect kOkArea(192, 398, 108, 34);
constexpr int kPillRadius = 17;

}  // namespace

KvCalendarDialog::KvCalendarDialog(QWidget* parent)
    : KvDialog(parent),
      m_calendar(new KvCalendarView(this)),
      m_today(new QPushButton(orvelle::text("today"), this)),
      m_ok(new QPushButton(orvelle::text("ok"), this)),
      m_close(new QPushButton(this)) {
    setFixedSize(kSize);
    setAccessibleName(orvelle::text("calendar"));
    m_calendar->setGeometry(kCalendarArea);
    m_ok->setGeometry(kOkArea);
    m_ok->setStyleSheet(KvWidgetUtils::primaryButtonStyle(kPillRadius));
    KvWidgetUtils::setFont(m_ok, orvelle::palette::kFontPixels);
    m_ok->setCursor(Qt::PointingHandCursor);
    m_ok->setDefault(true);
    m_today->setGeometry(kTodayArea);
    m_today->setStyleSheet(KvWidgetUtils::secondaryButtonStyle());
    KvWidgetUtils::setFont(m_today, orvelle::palette::kFontPixels);
    m_today->setCursor(Qt::PointingHandCursor);
    m_today->setAutoDefault(false);
    connect(m_today, &QPushButton::clicked, this, [this] {
        setDate(QDate::currentDate());
        emit clickDate(date());
    });
    KvWidgetUtils::setUpImageButton(m_close, QStringLiteral("close"), "close");
    m_close->setAutoDefault(false);
    m_close->setGeometry(kCloseArea);
    connect(m_calendar, &KvCalendarView::clickCalendar, this, &KvCalendarDialog::_onClickDate);
    connect(m_calendar, &KvCalendarView::monthChanged, this, &KvCalendarDialog::monthChanged);
    connect(m_ok, &QPushButton::clicked, this, &KvCalendarDialog::_onClickOkButton);
    connect(m_close, &QPushButton::clicked, this, &KvCalendarDialog::_onClickCloseButton);
}

void KvCalendarDialog::setDate(const QDate& date) {
    m_calendar->setDate(date);
}

QDate KvCalendarDialog::date() const {
    return m_calendar->date();
}

void KvCalendarDialog::setMarks(const QVector<KvTimeLineMark>& marks) {
    m_calendar->setMarks(marks);
}

void KvCalendarDialog::setMonths(const QVector<QDate>& months) {
    m_calendar->setMonths(months);
}

void KvCalendarDialog::showEvent(QShowEvent* event) {
    KvDialog::showEvent(event);
    // The arrow keys work at once.
    m_calendar->setFocus(Qt::OtherFocusReason);
}

void KvCalendarDialog::_onClickCloseButton(bool) {
    reject();
}

void KvCalendarDialog::_onClickOkButton(bool) {
    accept();
}

void KvCalendarDialog::_onClickDate(QDate date) {
    emit clickDate(date);
}
