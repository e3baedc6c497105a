#include <QWheelEvent>

#include <limits>

#include "core/configure.h"
#include "playback_support.h"
#include "support/suites.h"
#include "ui/playback/time_line_view.h"
#include "ui/playback/video_time_line_view.h"

using namespace orvelle;
using test::button;
using test::firstOf;
using test::sendMouse;
using Marks = QVector<KvTimeLineMark>;

namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kNoon = 1710504000;  // 2024-03-15 12:00 UTC
constexpr int kMiddle = 300;       // of the timeline that is tested
constexpr QSize kSize(600, 56);

std::unique_ptr<KvTimeLineView> makeLine(int value = kNoon, int secondsPerStep = 12) {
    auto line = std::make_unique<KvTimeLineView>();
    line->resize(kSize);
    line->setMinimum(1);
    line->setMaximum(kMax);
    line->setValue(value);
    line->setSecondsPerStep(secondsPerStep);
    return line;
}

Marks minutes(int first, int count, int every = 60) {
    Marks marks;
    for (int i = 0; i < count; ++i)
        marks.append({first + i * every, 60});
    return marks;
}

void turnWheel(QWidget* widget, int x, int angle) {
    const QPointF place(x, 20);
    QWheelEvent event(place, widget->mapToGlobal(place.toPoint()), {}, {0, angle}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(widget, &event);
}

}  // namespace

class TimeLineTest : public QObject {
    Q_OBJECT

private slots:
    void chosenMoment_snapsToTheRecordings() {
        const Marks three{{300, 60}, {100, 60}, {160, 60}};  // in any order
        const Marks overlapping{{200, 20}, {100, 200}, {150, 10}};
        const Marks absurd{{500, -400}, {kMin, 60}, {700, 0}, {kMax, kMax}};
        const struct {
            Marks marks;
            int time;
            int result;  // -1 for none
        } cases[] = {{{}, 50, -1},        {three, 5, 100},         {three, 100, 100},
                     {three, 160, 160},   {three, 219, 219},       {three, 220, 300},
                     {three, 360, -1},    {overlapping, 299, 299}, {overlapping, 300, -1},
                     {absurd, 600, kMax}, {absurd, kMin, kMax},    {{{-10, 60}}, -5, 0}};
        for (const auto& each : cases)
            QCOMPARE(snapped(spansOf(each.marks), each.time).value_or(-1), each.result);
        QCOMPARE(spansOf(minutes(kNoon, 50000)).size(), 1U);
    }

    void drag_movesTheValue_withinTheLimits() {
        const struct {
            int minimum, maximum, from, to, secondsPerStep, value;
        } cases[] = {{0, 0, 300, 345, 12, kNoon - 36},
                     {0, 0, 300, 299, 12, kNoon},
                     // A click goes to the moment under the mouse.
                     {0, 0, 345, 345, 12, kNoon + 36},
                     {0, 0, 255, 256, 12, kNoon - 36},
                     {0, kNoon + 5, 345, 345, 12, kNoon + 5},
                     {0, 0, 300, 298, 12, kNoon + 1},
                     {0, 0, 100, 400, 17280, kNoon - 345600},
                     {0, 0, 300, -900, 12, kNoon + 960},
                     {kNoon - 5, 0, 300, 345, 12, kNoon - 5},
                     {0, kNoon + 5, 300, 100, 12, kNoon + 5},
                     {0, 0, 10, 590, kMax, kMin}};
        for (const auto& each : cases) {
            const auto line = makeLine(kNoon, each.secondsPerStep);
            line->setMinimum(each.minimum);
            line->setMaximum(each.maximum);
            QSignalSpy ended(line.get(), &KvTimeLineView::valueChangeEnded);
            sendMouse(line.get(), QEvent::MouseButtonPress, each.from);
            QVERIFY(line->isDragging());
            sendMouse(line.get(), QEvent::MouseMove, each.to);
            sendMouse(line.get(), QEvent::MouseButtonRelease, each.to);
            QCOMPARE(line->value(), each.value);
            QCOMPARE(firstOf<int>(ended), QList<int>{each.value});
        }
    }

    void keys_step_andChooseWhenLetGo() {
        const std::tuple<Qt::Key, Qt::KeyboardModifiers, int> cases[] = {
            {Qt::Key_Left, {}, -12},
            {Qt::Key_Right, {}, 12},
            {Qt::Key_Left, Qt::ControlModifier, -60},
            {Qt::Key_Right, Qt::ShiftModifier, 60},
            {Qt::Key_Home, {}, 600},
            {Qt::Key_End, {}, 720}};
        for (const auto& [key, modifiers, moved] : cases) {
            const auto line = makeLine();
            line->setMarks(minutes(kNoon + 600, 3));
            QSignalSpy ended(line.get(), &KvTimeLineView::valueChangeEnded);
            QTest::keyPress(line.get(), key, modifiers);
            QVERIFY(ended.isEmpty() && line->isDragging());
            QTest::keyRelease(line.get(), key, modifiers);
            QCOMPARE(firstOf<int>(ended), QList<int>{kNoon + moved});
            QVERIFY(!line->isDragging());
        }
    }

    void wheel_zoomsAtTheCursor() {
        KvVideoTimeLineView bar;
        bar.resize(kSize.width() + 180, kSize.height());
        bar.grab();
        KvTimeLineView* line = bar.timeLine();
        for (const int x : {0, 90, kMiddle, 599}) {
            bar.setLevel(0);
            bar.setMaximum(kMax);
            bar.setValue(kNoon);
            const auto timeAtX = [&] {
                return line->value() + (x - kMiddle) * line->secondsPerStep() / 15;
            };
            const int time = timeAtX();
            for (const int angle : {-120, -60, -60, -240, 120, 240, 120}) {
                turnWheel(line, x, angle);
                QVERIFY(line->isDragging());
                QCOMPARE(timeAtX(), time);
            }
            QCOMPARE(bar.level(), 0);
            bar.setMaximum(kNoon + 5);
            turnWheel(line, x, -480);
            QCOMPARE(bar.level(), 4);
            QVERIFY(bar.value() <= kNoon + 5);
        }
    }

    void level_isStored_alsoAtBothEnds() {
        const int seconds[] = {12, 120, 720, 4320, 17280};
        KvVideoTimeLineView bar;
        bar.setLevel(-7);
        for (const int level : {1, 2, 3, 4, 4, 3, 2, 1, 0, 0}) {
            const bool isCloser = level < bar.level() || level == 0;
            KvConfigure().remove(settings::kTimeLineLevel);
            if (level % 2)
                button(bar, isCloser ? "zoom_in" : "zoom_out")->click();
            else
                QTest::keyClick(bar.timeLine(), isCloser ? Qt::Key_Plus : Qt::Key_Minus);
            QCOMPARE(KvConfigure().getInt(settings::kTimeLineLevel, -1), level);
            QCOMPARE(bar.timeLine()->secondsPerStep(), seconds[level]);
            QCOMPARE(KvVideoTimeLineView().level(), level);
        }
        KvConfigure().setInt(settings::kTimeLineLevel, 99);
        QCOMPARE(KvVideoTimeLineView().level(), 4);
        KvConfigure().remove(settings::kTimeLineLevel);
        QCOMPARE(levelOf(719, 5), 1);
    }

    void labels_areRightOnBothSides_whereTheClockIsChanged() {
        if (!test::ZoneGuard::isPossible())
            QSKIP("the zone is that of the machine");
        const struct {
            const char* zone;
            const char* moment;
            int level;
            const char* labels;
        } cases[] = {
            {"Europe/Berlin", "2024-03-31T01:00Z", 2, "01:00 03:00 04:00"},
            {"Europe/Berlin", "2024-10-27T01:00Z", 2, "02:00 02:00 03:00"},
            {"Europe/Berlin", "2024-10-27T03:00Z", 3, "18:00 10/27 00:00 06:00 12:00"},
            {"Europe/Berlin", "2024-03-31T00:59Z", 4,
             "03/30 00:00 03/31 00:00 04/01 00:00 04/02 00:00"},
            {"America/St_Johns", "2024-11-03T04:30Z", 2, "01:00 01:00 02:00"},
            {"Asia/Kathmandu", "2024-03-15T18:15Z", 3, "18:00 03/16 00:00 06:00"},
            {"Asia/Kathmandu", "2024-03-15T06:00Z", 1, "11:30 11:40 11:50 12:00"},
            {"America/St_Johns", "2024-03-10T05:30Z", 0, "01:59 03:00 03:01"},
            {"UTC", "1970-01-01T08:00Z", 3, "06:00 12:00 18:00"},
        };
        for (const auto& each : cases) {
            const test::ZoneGuard guard(each.zone);
            const auto moment = QDateTime::fromString(QLatin1String(each.moment), Qt::ISODate);
            const TimeScale scale{290, int(moment.toSecsSinceEpoch()), 15,
                                  secondsPerStepOf(each.level, 5)};
            QStringList labels;
            for (const TimeTick& tick : visibleTicks(scale, 5, 1, kMax))
                if (tick.isMajor)
                    labels += tickLabel(tick);
            QCOMPARE(labels.join(QLatin1Char(' ')), QLatin1String(each.labels));
        }
    }

    void ticks_endAtTheLimits() {
        const TimeScale scale{600, kNoon + 30, 15, 12};
        const auto ends = [&](int minimum, int maximum) {
            const auto ticks = visibleTicks(scale, 5, minimum, maximum);
            return std::make_pair(ticks.front().time - kNoon, ticks.back().time - kNoon);
        };
        QCOMPARE(ends(kNoon - 24, kNoon + 24), std::make_pair(qint64(-24), qint64(24)));
        QCOMPARE(ends(kNoon - 23, 0), std::make_pair(qint64(-12), qint64(0)));
    }

    void marks_paintWithoutSeams_andAsFarAsTheyReach() {
        const struct {
            Marks marks;
            int secondsPerStep;
            int left, right;  // pixels with the tint, to the last one
        } cases[] = {
            {minutes(kNoon - 60 * 25000, 50000), 12, 0, 598},
            {minutes(kNoon - 120 * 12500, 25000, 120), 17280, 0, 598},
            {{{kNoon + 60, 1}}, 17280, 301, 302},
            {{{kNoon + 100, -60}, {kNoon - 60, 120}, {kNoon - 45, 10}}, 12, 225, 374},
        };
        for (const auto& each : cases) {
            const auto line = makeLine(kNoon, each.secondsPerStep);
            line->setMarks(each.marks);
            const QImage after = line->grab().toImage();
            const QRgb tint = after.pixel(each.left + (each.left == 0), 5);
            QVERIFY(qAbs(qBlue(tint) - 165) < 3);  // not laid over itself
            for (int x = 1; x < kSize.width() - 2; ++x)
                if (x != kMiddle)
                    QCOMPARE(after.pixel(x, 5) == tint, x >= each.left && x <= each.right);
            QCOMPARE(after.pixel(kMiddle, 5), qRgb(255, 255, 255));
        }
    }

    void labels_areWhole_whereverTheLineStands() {
        for (int level = 0; level < kTimeLevels; ++level)
            for (int percent = 0; percent < 100; ++percent) {
                const int step = secondsPerStepOf(level, 5);
                const QImage image =
                    makeLine(kNoon + step * 5 * percent / 100, step)->grab().toImage();
                const auto isWritten = [&image](int from, int to) {
                    for (int x = from; x <= to; ++x)
                        for (int y = (kSize.height() + 25) / 2 + 1; y < kSize.height() - 2; ++y)
                            if (x != kMiddle && qGreen(image.pixel(x, y)) > 100)
                                return true;
                    return false;
                };
                QVERIFY(isWritten(2, kSize.width() - 4));
                QVERIFY(!isWritten(1, 1) && !isWritten(kSize.width() - 3, kSize.width() - 3));
            }
    }

    void absurdValues_neitherOverflowNorHang() {
        for (const int value : {kMin, 0, kMax})
            for (const int scale : {kMin, 1, kMax}) {
                const auto line = makeLine(value, scale);
                line->setMinimum(0);
                line->setPixelsPerStep(value);
                line->setStepsPerMajor(scale);
                line->setMarks({{kMax, kMax}, {kMin, kMin}, {0, kMax}, {kMin, kMax}});
                line->zoomAt(kMax, 1);
                line->zoomAt(kMin, kMax);
                QCOMPARE(line->grab().toImage().pixel(kMiddle, 3), qRgb(255, 255, 255));
            }
    }

    void bar_tellsOfItsButtons_andOfTheMomentChosen() {
        KvVideoTimeLineView bar;
        QSignalSpy played(&bar, &KvVideoTimeLineView::clickPlay);
        QSignalSpy selected(&bar, &KvVideoTimeLineView::selectedTime);
        bar.setPlayChecked(true);
        QVERIFY(played.isEmpty());
        button(bar, "pause")->click();
        button(bar, "play")->click();
        QCOMPARE(firstOf<int>(played), (QList<int>{0, 1}));
        bar.setMarks({{kNoon + 120, 60}});
        for (const int time : {kNoon + 70, kNoon + 130, kNoon + 999})
            emit bar.timeLine()->valueChangeEnded(time);
        QCOMPARE(firstOf<int>(selected), (QList<int>{kNoon + 120, kNoon + 130, kNoon + 999}));
        QCOMPARE(bar.value(), kNoon + 130);
        QVERIFY(QMetaType::type("QVector<KvTimeLineMark>") != QMetaType::UnknownType);
    }
};

static const orvelle::test::RegisterSuite<TimeLineTest> kTimeLineTest;
#include "time_line_test.moc"
