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

bool answer(Recordings& recordings, const Marks& runs) {
    return recordings.answer(runs, kForever);
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
        QCOMPARE(orvelle::filesOf(runs, 0, kForever).size(), Recordings::kMaxAnswerMarks);
        // The newest stay.
        Recordings recordings;
        QDate month = kNovember.addYears(-5);
        for (; month < kNovember; month = month.addMonths(2)) {
            recordings.ask(month);
            QVERIFY(answer(recordings, {{secondsOf(month.addMonths(-1)), 62 * 86400}}));
        }
        QCOMPARE(recordings.all().size(), Recordings::kMaxMarks);
        QVERIFY(recordings.all().last().start >= secondsOf(month.addMonths(-1)) - 60);
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
        QVERIFY(!answer(recordings, filesFrom(november, 2)));
        QVERIFY(recordings.isEmpty());
        recordings.ask(kNovember);
        // The year 2001 was not asked for, and twice the same counts once.
        QVERIFY(answer(recordings, filesFrom(november, 2) + filesFrom(1000000000, 1) +
                                       filesFrom(october, 1) + filesFrom(november, 1)));
        QCOMPARE(recordings.all(), filesFrom(october, 1) + filesFrom(november, 2));
        recordings.select(2);
        recordings.ask({2024, 9, 1});
        QVERIFY(recordings.isAsking());
        QVERIFY(answer(recordings, filesFrom(august, 1)));
        QVERIFY(!recordings.isAsking());
        QCOMPARE(recordings.all().size(), 4);
        QCOMPARE(recordings.current(), 3);
        recordings.ask(kNovember);
        QVERIFY(answer(recordings, {}));
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
        QVERIFY(!answer(recordings, late));
        QVERIFY(recordings.isAsking() && recordings.isEmpty());
        QVERIFY(answer(recordings, late + fitting));
        QCOMPARE(recordings.all(), fitting);
        QCOMPARE(recordings.earliest(), qint64(secondsOf({2024, 6, 1})));
        // One that got no answer does not keep the next from its own.
        recordings.ask(kNovember);
        recordings.ask({2024, 7, 1});
        QVERIFY(answer(recordings, fitting));
        QVERIFY(!recordings.isAsking());
        QVERIFY(!answer(recordings, late));
    }

    void quietRequest_isNotWaitedFor() {
        Recordings recordings;
        QVERIFY(recordings.askAgain(kNovember, true));
        QVERIFY(!recordings.isAsking());
        QVERIFY(!recordings.askAgain(kNovember, false));
        recordings.giveUpQuiet();
        QVERIFY(recordings.isAsking());
        QVERIFY(answer(recordings, {}));
        recordings.askAgain(kNovember, true);
        recordings.giveUpQuiet();
        QVERIFY(!answer(recordings, {}));
        QVERIFY(recordings.ask(kNovember));
    }

    void fullAnswer_isFollowedByTheTimeBefore_untilAllIsKnown() {
        // Every second minute is missing, so that each run is one recording.
        const int count = 20000;
        const int first = secondsOf(kNovember.addDays(-20));
        Marks card;
        for (int i = 0; i < count; ++i)
            card.append({first + 120 * i, 60});
        const auto newestOf = [&card](const orvelle::TimeSpan& span) {
            Marks runs;
            for (int i = card.size() - 1; i >= 0 && runs.size() < Recordings::kFullAnswer; --i)
                if (card.at(i).start >= span.start && card.at(i).start < span.end)
                    runs.prepend(card.at(i));
            return runs;
        };
        const QDate day = kNovember.addDays(-18);
        Recordings recordings;
        recordings.ask(kNovember);
        QVERIFY(answer(recordings, newestOf({secondsOf(kNovember.addMonths(-1)),
                                             secondsOf(kNovember.addMonths(1))})));
        QCOMPARE(recordings.takeStart().index, Recordings::kFullAnswer - 1);
        QVERIFY(!recordings.knows(day));
        recordings.wishDay(day);
        int questions = 1;
        for (; const auto rest = recordings.askRest(); ++questions) {
            QVERIFY(recordings.takeStart().wish == Recordings::Wish::kNone ||
                    recordings.knows(day));
            // A camera's clock may have been changed since: an hour of it comes twice.
            QVERIFY(answer(recordings, newestOf({rest->start, rest->end + 3600})));
        }
        QCOMPARE(recordings.all().size(), count);
        QVERIFY(recordings.knows(day) && questions < 150);
        // What was recorded meanwhile does not ask for all of it again.
        card.append({card.last().start + 120, 60});
        recordings.askAgain(kNovember, true);
        QVERIFY(answer(recordings, newestOf({secondsOf(kNovember.addMonths(-1)),
                                             secondsOf(kNovember.addMonths(1))})));
        QVERIFY(!recordings.askRest());
        QCOMPARE(recordings.all().size(), count + 1);
    }

    void older_isLookedForMonthByMonth_upToTheOldest_data() {
        QTest::addColumn<bool>("isOldestTold");
        QTest::addColumn<int>("months");
        QTest::addColumn<int>("questions");
        QTest::newRow("the month before") << true << 2 << 1;
        QTest::newRow("three years before") << true << 36 << 18;
        QTest::newRow("told by nobody") << false << 11 << 5;
        QTest::newRow("too far") << false << 40 << 12;
    }

    void older_isLookedForMonthByMonth_upToTheOldest() {
        QFETCH(bool, isOldestTold);
        QFETCH(int, months);
        QFETCH(int, questions);
        using Wish = Recordings::Wish;
        const int oldest = secondsOf(kNovember.addMonths(-months).addDays(3));
        Recordings recordings;
        if (isOldestTold)
            recordings.noteOldest(oldest);
        recordings.ask(kNovember);
        answer(recordings, filesFrom(secondsOf(kNovember), 2));
        recordings.takeStart();
        recordings.select(0);
        QCOMPARE(recordings.previous(), -1);
        recordings.wish(Wish::kOlder, recordings.currentStart());
        Recordings::Start start;
        int asked = 0;
        for (; start.wish == Wish::kNone; ++asked) {
            const QDate month = recordings.monthForWish();
            QVERIFY(month.isValid() && recordings.isAsking());
            recordings.askAgain(month, false);
            const bool isHere =
                oldest >= secondsOf(month.addMonths(-1)) && oldest < secondsOf(month.addMonths(1));
            answer(recordings, isHere ? filesFrom(oldest, 1) : Marks());
            start = recordings.takeStart();
        }
        QCOMPARE(asked, questions);
        QCOMPARE(start.index, months > 36 ? -1 : 0);
        QVERIFY(!recordings.isAsking());
        if (start.index < 0)
            return;
        // Nothing is older than the oldest; what lies between is known, so that the way back is,
        // too.
        recordings.select(0);
        recordings.wish(Wish::kOlder, recordings.currentStart());
        QVERIFY(!isOldestTold || recordings.takeStart().wish == Wish::kOlder);
        QCOMPARE(recordings.next(), 1);
    }

    void unknownTime_isNeitherEmptyNorSkipped() {
        Recordings recordings;
        recordings.ask({2024, 3, 1});
        answer(recordings, filesFrom(secondsOf({2024, 3, 5}), 1));
        recordings.ask(kNovember);
        answer(recordings, filesFrom(secondsOf(kNovember), 1));
        const orvelle::TimeSpans gaps =
            recordings.unknown({recordings.earliest(), secondsOf(kNovember)});
        QCOMPARE(gaps.size(), size_t(1));
        QCOMPARE(gaps.front().start, qint64(secondsOf({2024, 4, 1})));
        QCOMPARE(gaps.front().end, qint64(secondsOf({2024, 10, 1})));
        // From March the next one is not November's, and the other way round.
        recordings.select(0);
        QCOMPARE(recordings.next(), -1);
        recordings.wish(Recordings::Wish::kNewer, recordings.currentEnd());
        QCOMPARE(recordings.monthForWish(), QDate(2024, 5, 1));
        recordings.select(1);
        QCOMPARE(recordings.previous(), -1);
        const int june = secondsOf({2024, 6, 2}, 12);
        recordings.wish(Recordings::Wish::kMoment, june);
        QCOMPARE(recordings.monthForWish(), QDate(2024, 6, 1));
        recordings.askAgain({2024, 6, 1}, false);
        answer(recordings, filesFrom(june - 30, 1));
        const Recordings::Start start = recordings.takeStart();
        QCOMPARE(start.index, 1);
        QCOMPARE(start.from, qint64(june));
    }

    void moment_isFoundInItsFile() {
        Recordings recordings;
        const int start = secondsOf(kNovember, 23, 59);
        recordings.ask(kNovember);
        answer(recordings, filesFrom(start, 2) + filesFrom(start + 600, 1));
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
        answer(recordings, filesFrom(secondsOf(kNovember), 3));
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
        recordings.wishDay(day);
        answer(recordings, filesFrom(secondsOf(kNovember), 1));
        QCOMPARE(recordings.takeStart().index, -1);
        answer(recordings, filesFrom(secondsOf(day, 7), 2));
        QCOMPARE(recordings.takeStart().index, 0);
        recordings.ask(kNovember);
        recordings.wishDay(kNovember.addDays(3));
        answer(recordings, {});
        const Recordings::Start start = recordings.takeStart();
        QVERIFY(start.wish == Recordings::Wish::kDay && start.index < 0);
        QVERIFY(recordings.takeStart().wish == Recordings::Wish::kNone);
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
