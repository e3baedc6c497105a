#include "playback_support.h"
#include "support/suites.h"
#include "ui/playback/calendar_day_view.h"
#include "ui/playback/calendar_dialog.h"
#include "ui/playback/calendar_view.h"
#include "ui/playback/slider.h"

using namespace orvelle;
using test::button;
using test::firstOf;
using test::sendMouse;
using Marks = QVector<KvTimeLineMark>;

namespace {

const QDate kToday(2024, 9, 18);

class Calendar : public KvCalendarView {
public:
    Calendar() { setDate(kToday); }

protected:
    QDate today() const override { return kToday; }
};

/// Null outside the month that is shown.
KvCalendarDayView* cell(const QWidget& calendar, const QDate& date) {
    for (auto* each : calendar.findChildren<KvCalendarDayView*>())
        if (each->date() == date && each->isEnabled())
            return each;
    return nullptr;
}

int secondsOf(const QDate& date) {
    return static_cast<int>(date.startOfDay().toSecsSinceEpoch());
}

}  // namespace

class CalendarTest : public QObject {
    Q_OBJECT

private slots:
    void month_fillsTheCells() {
        // The first begins on a Sunday: a whole row of the month before.
        const std::pair<QDate, int> cases[] = {
            {{2024, 9, 30}, 7}, {{2024, 7, 1}, 1}, {{2024, 2, 29}, 4}};
        for (const auto& [date, offset] : cases) {
            Calendar calendar;
            calendar.setDate(date);
            const auto cells = calendar.findChildren<KvCalendarDayView*>();
            QCOMPARE(cells.size(), 42);
            for (int i = 0; i < cells.size(); ++i) {
                QCOMPARE(cells.at(i)->date(), calendar.month().addDays(i - offset));
                QCOMPARE(cells.at(i)->isEnabled(), cells.at(i)->date().month() == date.month());
            }
        }
    }

    void arrows_goFromMonthToMonth_butNotPastTheCurrentOne() {
        Calendar calendar;
        QSignalSpy changed(&calendar, &KvCalendarView::monthChanged);
        QPushButton* next = button(calendar, "next_month");
        QVERIFY(!next->isEnabled());
        calendar.setDate(QDate(2024, 1, 31));
        button(calendar, "previous_month")->click();
        next->click();
        QCOMPARE(firstOf<QDate>(changed), (QList<QDate>{{2023, 12, 1}, {2024, 1, 1}}));
        for (int i = 0; i < 20; ++i)
            next->click();
        QCOMPARE(calendar.month(), QDate(2024, 9, 1));
        QCOMPARE(calendar.date(), QDate(2024, 1, 31));
    }

    void day_hasRecordings_fromItsFirstSecondToItsLast() {
        if (!test::ZoneGuard::isPossible())
            QSKIP("the zone is that of the machine");
        for (const char* zone : {"Europe/Berlin", "Asia/Kathmandu", "America/St_Johns", "UTC"}) {
            const test::ZoneGuard guard(zone);
            // Of 23 and of 25 hours in Berlin and in St. John's.
            for (const QDate& day : {QDate(2024, 3, 31), QDate(2024, 10, 27), QDate(2024, 3, 10),
                                     QDate(2024, 11, 3)}) {
                const int begin = secondsOf(day);
                const int end = secondsOf(day.addDays(1));
                const std::pair<Marks, std::vector<bool>> cases[] = {
                    {{{end - 1, 1}}, {false, true, false}},
                    {{{end - 1, 2}}, {false, true, true}},
                    {{{begin - 60, 61}}, {true, true, false}},
                    {{{end, 60}, {begin, -5}, {begin, 0}}, {false, false, true}},
                    {{{begin - 9, 200000}}, {true, true, true}}};
                for (const auto& each : cases)
                    QCOMPARE(recordedDays(spansOf(each.first), day.addDays(-1), 3), each.second);
            }
        }
    }

    void click_choosesADayOfTheMonth() {
        Calendar calendar;
        calendar.setMarks({{secondsOf({2024, 9, 3}), 60}, {secondsOf(kToday), 60}});
        QSignalSpy clicked(&calendar, &KvCalendarView::clickCalendar);
        const QDate days[] = {kToday, {2024, 9, 3}, {2024, 9, 4}};
        const auto stateOf = [&](int i) { return cell(calendar, days[i])->state(); };
        for (int chosen = 0; chosen < 3; ++chosen) {
            KvCalendarDayView* day = cell(calendar, days[chosen]);
            sendMouse(day, QEvent::MouseButtonRelease, -3);
            sendMouse(calendar.findChild<KvCalendarDayView*>(), QEvent::MouseButtonRelease, 5);
            QCOMPARE(clicked.count(), chosen);
            sendMouse(day, QEvent::MouseButtonRelease, 5);
            QCOMPARE(calendar.date(), days[chosen]);
            // A day without recordings looks as before.
            QCOMPARE(stateOf(0), chosen == 0 ? 1 : 2);
            QCOMPARE(stateOf(1), chosen == 1 ? 1 : 0);
            QCOMPARE(stateOf(2), 0);
        }
    }

    void keys_goFromDayToDay_chooseOne_andLeave() {
        KvCalendarDialog dialog;
        dialog.setDate({2024, 5, 31});
        QSignalSpy chosen(&dialog, &KvCalendarDialog::clickDate);
        QSignalSpy changed(&dialog, &KvCalendarDialog::monthChanged);
        QSignalSpy finished(&dialog, &QDialog::finished);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        const std::pair<Qt::Key, QDate> steps[] = {{Qt::Key_PageUp, {2024, 4, 30}},
                                                   {Qt::Key_Right, {2024, 5, 1}},
                                                   {Qt::Key_Up, {2024, 4, 24}},
                                                   {Qt::Key_Left, {2024, 4, 23}},
                                                   {Qt::Key_Return, {2024, 4, 23}}};
        for (const auto& [key, day] : steps) {
            QTest::keyClick(dialog.focusWidget(), key);
            QCOMPARE(dialog.focusWidget(), cell(dialog, day));
        }
        QCOMPARE(firstOf<QDate>(chosen), QList<QDate>{QDate(2024, 4, 23)});
        QCOMPARE(firstOf<QDate>(changed), (QList<QDate>{{2024, 4, 1}, {2024, 5, 1}, {2024, 4, 1}}));
        QVERIFY(finished.isEmpty());
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
        QCOMPARE(finished.value(0).value(0), QVariant(1));
    }

    void slider_jumpsToTheClick() {
        const struct {
            int minimum, maximum, x, value;
            double ratio;
        } cases[] = {{0, 100, 50, 25, 0.25}, {10, 30, 100, 20, 0.5},
                     {-5, -5, 100, -5, 0},   {0, 100, 900, 100, 1},
                     {0, 3, 60, 0, 0},       {0, 2000000000, 150, 1500000000, 0.75}};
        for (const auto& each : cases) {
            KvSlider slider;
            slider.resize(200, 20);
            slider.setRange(each.minimum, each.maximum);
            sendMouse(&slider, QEvent::MouseButtonPress, each.x);
            QVERIFY(slider.isPressed());
            QCOMPARE(slider.value(), each.value);
            QCOMPARE(slider.ratio(), each.ratio);
            sendMouse(&slider, QEvent::MouseButtonRelease, each.x);
            QVERIFY(!slider.isPressed());
        }
    }
};

static const orvelle::test::RegisterSuite<CalendarTest> kCalendarTest;
#include "calendar_test.moc"
