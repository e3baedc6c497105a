#include <QtTest>

#include <limits>

#include "device/device_messages.h"
#include "support/suites.h"
#include "ui/playback/moment_choice.h"
#include "ui/playback/recordings.h"

using orvelle::ClickGuard;
using orvelle::Recordings;
using Marks = QVector<KvTimeLineMark>;

namespace {

const QDate kNovember(2024, 11, 1);
constexpr int kForever = std::numeric_limits<int>::max();

int secondsOf(const QDate& day, int hour = 0, int minute = 0, int second = 0) {
    return static_cast<int>(QDateTime(day, QTime(hour, minute, second)).toSecsSinceEpoch());
}

Marks filesFrom(int start, int count) {
    Marks files;
    for (int i = 0; i < count; ++i)
        files.append({start + 60 * i, 60});
    return files;
}

}  // namespace

class RecordingsTest : public QObject {
    Q_OBJECT

private slots:
    void list_becomesFilesOfAMinute() {
        orvelle::SMsgAVIoctrlListEventResp_VBK list;
        // No files, no time, the last that fits, and one and all beyond.
        list.runs = {{5000, 1},        {1000, 5},        {3000, 0},       {0, 3},
                     {2147483587U, 1}, {2147483588U, 1}, {0xFFFFFFFFU, 1}};
        const Marks files = filesFrom(5000, 1) + filesFrom(1000, 5) + filesFrom(2147483587, 1);
        const Marks runs = orvelle::runsOf(list);
        QCOMPARE(orvelle::filesOf(runs, 0, kForever), files);
        QCOMPARE(orvelle::filesOf(runs, 1001, 1181), filesFrom(1060, 3));
    }

    void absurdLists_areCapped() {
        orvelle::SMsgAVIoctrlListEventResp_VBK list;
        list.runs.fill({1700000000, list.kMaxRunMinutes}, 255);
        const Marks runs = orvelle::runsOf(list);
        QCOMPARE(runs.size(), 255);
        QCOMPARE(orvelle::filesOf(runs, 0, kForever).size(), Recordings::kMaxMarks);
        // The newest stay.
        Recordings recordings;
        for (const QDate& month : {kNovember, kNovember.addMonths(3)}) {
            recordings.ask(month);
            QVERIFY(recordings.answer({{secondsOf(month.addMonths(-1)), 61 * 86400}}));
        }
        QCOMPARE(recordings.all().size(), Recordings::kMaxMarks);
        QCOMPARE(recordings.all().last().start, secondsOf({2025, 3, 2}) - 60);
    }

    void month_isAskedForOnce_untilAnother() {
        Recordings recordings;
        QVERIFY(recordings.ask(kNovember.addDays(29)));
        QVERIFY(!recordings.ask(kNovember));
        QVERIFY(recordings.ask(kNovember.addDays(-1)));
        QVERIFY(recordings.ask(kNovember));
        recordings.forgetMonths();
        QVERIFY(recordings.ask(kNovember));
    }

    void answer_replacesItsTwoMonthsOnly() {
        Recordings recordings;
        const int november = secondsOf(kNovember, 10);
        const int october = secondsOf({2024, 10, 31}, 23, 59);
        const int august = secondsOf({2024, 8, 5});
        QVERIFY(!recordings.answer(filesFrom(november, 2)));
        QVERIFY(recordings.isEmpty());
        recordings.ask(kNovember);
        // The year 2001 was not asked for, and twice the same counts once.
        QVERIFY(recordings.answer(filesFrom(november, 2) + filesFrom(1000000000, 1) +
                                  filesFrom(october, 1) + filesFrom(november, 1)));
        QCOMPARE(recordings.all(), filesFrom(october, 1) + filesFrom(november, 2));
        recordings.select(2);
        recordings.ask({2024, 9, 1});
        QVERIFY(recordings.isAsking());
        QVERIFY(recordings.answer(filesFrom(august, 1)));
        QVERIFY(!recordings.isAsking());
        QCOMPARE(recordings.all().size(), 4);
        QCOMPARE(recordings.current(), 3);
        recordings.ask(kNovember);
        QVERIFY(recordings.answer({}));
        QCOMPARE(recordings.all(), filesFrom(august, 1));
        // What played is gone from the list; its neighbours are still known.
        QCOMPARE(recordings.current(), -1);
        QCOMPARE(recordings.previous(), 0);
        QCOMPARE(recordings.next(), -1);
    }

    void lateAnswer_isNotTakenForAnothers() {
        const Marks late = filesFrom(secondsOf(kNovember), 2);
        const Marks fitting = filesFrom(secondsOf({2024, 6, 5}), 1);
        Recordings recordings;
        QCOMPARE(recordings.earliest(), qint64(1));
        recordings.ask(kNovember);
        recordings.giveUp();
        recordings.ask({2024, 7, 1});
        QVERIFY(!recordings.answer(late));
        QVERIFY(recordings.isAsking() && recordings.isEmpty());
        QVERIFY(recordings.answer(late + fitting));
        QCOMPARE(recordings.all(), fitting);
        QCOMPARE(recordings.earliest(), qint64(secondsOf({2024, 6, 1})));
        // One that got no answer does not keep the next from its own.
        recordings.ask(kNovember);
        recordings.ask({2024, 7, 1});
        QVERIFY(recordings.answer(fitting));
        QVERIFY(!recordings.isAsking());
        QVERIFY(!recordings.answer(late));
    }

    void quietRequest_isNotWaitedFor() {
        Recordings recordings;
        QVERIFY(recordings.askAgain(kNovember, true));
        QVERIFY(!recordings.isAsking());
        QVERIFY(!recordings.askAgain(kNovember, false));
        recordings.giveUpQuiet();
        QVERIFY(recordings.isAsking());
        QVERIFY(recordings.answer({}));
        recordings.askAgain(kNovember, true);
        recordings.giveUpQuiet();
        QVERIFY(!recordings.answer({}));
        QVERIFY(recordings.ask(kNovember));
    }

    void moment_isFoundInItsFile() {
        Recordings recordings;
        const int start = secondsOf(kNovember, 23, 59);
        recordings.ask(kNovember);
        recordings.answer(filesFrom(start, 2) + filesFrom(start + 600, 1));
        const QVector<QPair<int, int>> found{{-1, -1},  {0, 0},   {59, 0},  {60, 1},
                                             {120, -1}, {600, 2}, {659, 2}, {660, -1}};
        for (const auto& [offset, index] : found)
            QCOMPARE(recordings.indexAt(start + offset), index);
        QCOMPARE(recordings.indexEndingAfter(start + 59), 0);
        QCOMPARE(recordings.indexEndingAfter(start + 120), 2);
        QCOMPARE(recordings.indexEndingAfter(start + 660), -1);
        QCOMPARE(recordings.indexOn(kNovember), 0);
        QCOMPARE(recordings.indexOn(kNovember.addDays(1)), 1);
        QCOMPARE(recordings.indexOn(kNovember.addDays(2)), -1);
    }

    void newest_playsByItselfOnce() {
        Recordings recordings;
        QCOMPARE(recordings.next(), -1);
        recordings.ask(kNovember);
        recordings.answer(filesFrom(secondsOf(kNovember), 3));
        QCOMPARE(recordings.takeStart().index, 2);
        QCOMPARE(recordings.takeStart().index, -1);
        recordings.select(0);
        QCOMPARE(recordings.previous(), -1);
        QCOMPARE(recordings.next(), 1);
    }

    void awaitedDay_playsWhenItsMonthIsThere() {
        Recordings recordings;
        const QDate day(2024, 8, 5);
        recordings.ask(kNovember);
        recordings.ask(day);
        recordings.awaitDay(day);
        recordings.answer(filesFrom(secondsOf(kNovember), 1));
        QCOMPARE(recordings.takeStart().index, -1);
        recordings.answer(filesFrom(secondsOf(day, 7), 2));
        QCOMPARE(recordings.takeStart().index, 0);
        recordings.ask(kNovember);
        recordings.awaitDay(kNovember.addDays(3));
        recordings.answer({});
        QVERIFY(recordings.takeStart().isMissing);
        QVERIFY(!recordings.takeStart().isMissing);
    }

    void secondClick_passesAfterASecond() {
        ClickGuard guard;
        QVERIFY(guard.accepts(5));
        QVERIFY(!guard.accepts(5));
        QVERIFY(!guard.accepts(1004));
        QCOMPARE(guard.remaining(1004), qint64(1));
        // Refused ones do not count.
        QVERIFY(guard.accepts(1005));
    }
};

static const orvelle::test::RegisterSuite<RecordingsTest> kRecordingsTest;
#include "recordings_test.moc"
