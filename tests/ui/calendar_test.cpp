#include "playback_support.h"
#include "support/suites.h"
#include "ui/playback/calendar_day_view.h"
#include "ui/playback/calendar_dialog.h"
#include "ui/playback/calendar_view.h"
#include "ui/playback/slider.h"

using namespace orvelle;
using test::button;
using test::firstOf;
using Marks = QVector<KvTimeLineMark>;

namespace {

const QDate kToday(2024, 9, 18);

class Calendar : public KvCalendarView {
public:
    Calendar() { setDate(kToday); }

protected:
    QDate today() const override { return kToday; }
};

QList<KvCalendarDayView*> cells(const QWidget& calendar) {
    return calendar.findChildren<KvCalendarDayView*>();
}

KvCalendarDayView* cell(const QWidget& calendar, const QDate& date) {
    for (auto* each : cells(calendar))
        if (each->date() == date && each->isEnabled())
            return each;
    return nullptr;
}

int secondsOf(const QDate& date, const QTime& time = {0, 0}) {
    return static_cast<int>(QDateTime(date, time).toSecsSinceEpoch());
}

void release(QWidget* widget, const QPoint& place) {
    QMouseEvent event(QEvent::MouseButtonRelease, place, Qt::LeftButton, {}, {});
    QCoreApplication::sendEvent(widget, &event);
}

}  // namespace

class CalendarTest : public QObject {
    Q_OBJECT

private slots:
    void month_fillsTheCells() {
        const struct {
            QDate date;
            int offset;
        } cases[] = {{{2024, 9, 30}, 7},  // begins on a Sunday
                     {{2024, 7, 1}, 1},
                     {{2024, 2, 29}, 4},
                     {{2023, 4, 5}, 6}};
        for (const auto& each : cases) {
            Calendar calendar;
            calendar.setDate(each.date);
            const auto all = cells(calendar);
            QCOMPARE(all.size(), 42);
            for (int i = 0; i < all.size(); ++i) {
                const bool isIn = i >= each.offset && i < each.offset + each.date.daysInMonth();
                QCOMPARE(all.at(i)->isEnabled(), isIn);
                QCOMPARE(all.at(i)->date(), calendar.month().addDays(i - each.offset));
            }
        }
    }

    void arrows_goFromMonthToMonth_butNotPastTheCurrentOne() {
        Calendar calendar;
        QSignalSpy changed(&calendar, &KvCalendarView::monthChanged);
        QPushButton* next = button(calendar, "next_month");
        QPushButton* previous = button(calendar, "previous_month");
        QVERIFY(!next->isEnabled());
        calendar.setDate(QDate(2024, 1, 31));
        previous->click();
        next->click();
        next->click();
        QCOMPARE(firstOf<QDate>(changed),
                 (QList<QDate>{{2023, 12, 1}, {2024, 1, 1}, {2024, 2, 1}}));
        for (int i = 0; i < 20; ++i)
            next->click();
        QCOMPARE(calendar.month(), QDate(2024, 9, 1));
        QCOMPARE(calendar.date(), QDate(2024, 1, 31));
    }

    void day_hasRecordings_fromItsFirstSecondToItsLast() {
        for (const char* zone : {"Europe/Berlin", "Asia/Kathmandu", "America/St_Johns", "UTC"}) {
            const test::ZoneGuard guard(zone);
            // Among them days of 23 and of 25 hours.
            for (const QDate& day : {QDate(2024, 3, 31), QDate(2024, 10, 27), QDate(2024, 3, 10),
                                     QDate(2024, 11, 3), QDate(2024, 6, 1)}) {
                const int begin = secondsOf(day);
                const int end = secondsOf(day.addDays(1));
                const std::pair<Marks, std::vector<bool>> cases[] = {
                    {{{end - 1, 1}}, {false, true, false}},
                    {{{end - 1, 2}}, {false, true, true}},
                    {{{begin - 60, 60}}, {true, false, false}},
                    {{{begin - 60, 61}}, {true, true, false}},
                    {{{end, 60}, {begin, -5}, {begin, 0}}, {false, false, true}},
                    {{{begin - 9, 200000}}, {true, true, true}},
                    {{}, {false, false, false}}};
                for (const auto& each : cases)
                    QCOMPARE(recordedDays(spansOf(each.first), day.addDays(-1), 3), each.second);
            }
        }
    }

    void state_tellsSelectedAndToday() {
        const Marks marks{{secondsOf({2024, 9, 3}, {12, 0}), 60}, {secondsOf(kToday), 60}};
        const struct {
            QDate selected, day;
            int state;
            bool hasRecordings;
        } cases[] = {{{2024, 9, 3}, {2024, 9, 3}, KvCalendarDayView::kSelected, true},
                     {{2024, 9, 4}, {2024, 9, 3}, KvCalendarDayView::kNormal, true},
                     {{2024, 9, 4}, {2024, 9, 4}, KvCalendarDayView::kNormal, false},
                     {{2024, 9, 4}, kToday, KvCalendarDayView::kToday, true},
                     {kToday, kToday, KvCalendarDayView::kSelected, true}};
        for (const auto& each : cases) {
            Calendar calendar;
            calendar.setMarks(marks);
            calendar.setDate(each.selected);
            QCOMPARE(cell(calendar, each.day)->state(), each.state);
            QCOMPARE(cell(calendar, each.day)->hasRecordings(), each.hasRecordings);
        }
    }

    void click_choosesADayOfTheMonth() {
        Calendar calendar;
        calendar.resize(330, 330);
        calendar.grab();
        QSignalSpy clicked(&calendar, &KvCalendarView::clickCalendar);
        KvCalendarDayView* day = cell(calendar, {2024, 9, 3});
        release(day, {-3, 5});
        release(cells(calendar).first(), {5, 5});
        QVERIFY(clicked.isEmpty());
        release(day, {5, 5});
        QCOMPARE(firstOf<QDate>(clicked), QList<QDate>{QDate(2024, 9, 3)});
        QCOMPARE(calendar.date(), QDate(2024, 9, 3));
    }

    void keys_goFromDayToDay() {
        const struct {
            QDate from;
            int key;
            QDate to;
        } cases[] = {{{2024, 9, 3}, Qt::Key_Right, {2024, 9, 4}},
                     {{2024, 9, 3}, Qt::Key_Down, {2024, 9, 10}},
                     {{2024, 9, 3}, Qt::Key_Up, {2024, 8, 27}},
                     {{2024, 9, 1}, Qt::Key_Left, {2024, 8, 31}},
                     {{2024, 8, 31}, Qt::Key_Right, {2024, 9, 1}},
                     {{2024, 3, 31}, Qt::Key_PageUp, {2024, 2, 29}},
                     {{2024, 9, 30}, Qt::Key_Right, {2024, 9, 30}}};  // the current month ends
        Calendar calendar;
        calendar.show();
        QVERIFY(QTest::qWaitForWindowActive(&calendar));
        for (const auto& each : cases) {
            calendar.setDate(each.from);
            calendar.setFocus();
            QTest::keyClick(calendar.focusWidget(), Qt::Key(each.key));
            auto* reached = qobject_cast<KvCalendarDayView*>(calendar.focusWidget());
            QVERIFY(reached && reached->isEnabled());
            QCOMPARE(reached->date(), each.to);
            QCOMPARE(calendar.date(), each.from);
        }
    }

    void dialog_isKeyboardWhole() {
        KvCalendarDialog dialog;
        dialog.setDate({2024, 5, 10});
        QSignalSpy chosen(&dialog, &KvCalendarDialog::clickDate);
        QSignalSpy changed(&dialog, &KvCalendarDialog::monthChanged);
        QSignalSpy finished(&dialog, &QDialog::finished);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        for (const auto key : {Qt::Key_PageUp, Qt::Key_Left, Qt::Key_Return})
            QTest::keyClick(dialog.focusWidget(), key);
        QCOMPARE(firstOf<QDate>(chosen), QList<QDate>{QDate(2024, 4, 9)});
        QCOMPARE(firstOf<QDate>(changed), QList<QDate>{QDate(2024, 4, 1)});
        QVERIFY(finished.isEmpty());
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
        QCOMPARE(finished.value(0).value(0), QVariant(1));
        QCOMPARE(dialog.date(), QDate(2024, 4, 9));
    }

    void slider_jumpsToTheClick() {
        const struct {
            int minimum, maximum, x, value;
        } cases[] = {{0, 100, 0, 0},    {0, 100, 50, 25},  {0, 100, 199, 99},
                     {10, 20, 100, 15}, {-5, -5, 100, -5}, {0, 2000000000, 100, 1000000000},
                     {0, 100, 900, 100}};
        for (const auto& each : cases) {
            KvSlider slider;
            slider.resize(200, 20);
            slider.setRange(each.minimum, each.maximum);
            QMouseEvent press(QEvent::MouseButtonPress, QPoint(each.x, 10), Qt::LeftButton,
                              Qt::LeftButton, {});
            QCoreApplication::sendEvent(&slider, &press);
            QVERIFY(slider.isPressed());
            QCOMPARE(slider.value(), each.value);
            const double range = double(each.maximum) - each.minimum;
            QCOMPARE(slider.ratio(), range > 0 ? (each.value - each.minimum) / range : 0);
            release(&slider, {each.x, 10});
            QVERIFY(!slider.isPressed());
        }
    }
};

static const orvelle::test::RegisterSuite<CalendarTest> kCalendarTest;
#include "calendar_test.moc"
