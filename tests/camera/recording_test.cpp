#include <QDir>
#include <QTemporaryDir>

#include "camera/card/minute_recorder.h"
#include "camera/card/recording_name.h"
#include "camera/card/recording_reader.h"
#include "camera/demo/card_maker.h"
#include "camera/media_kit.h"
#include "support/suites.h"

using namespace orvelle;

namespace {

constexpr int64_t kSecond = 1'000'000;
constexpr int64_t kOriginUs = 1'600'000'037'400'000;  ///< wall clock where the streams begin
constexpr int64_t kFirst = 1'600'000'037;
constexpr FeedFormat kFormat{128, 80, 5, 100'000};

using Runs = QList<QPair<qlonglong, int>>;

Runs runsOf(const CardStore& store) {
    Runs runs;
    for (const RecordingRun& run : store.runs(0, INT32_MAX))
        runs.append({run.startSec, int(run.minutes)});
    return runs;
}

/// A card in a directory of its own with a recorder.
struct Card {
    Card() { store.refresh(); }
    void record(const std::vector<EncodedFrame>& frames) {
        for (const EncodedFrame& frame : frames)
            recorder.take(frame, kOriginUs);
    }
    QString path(const QString& name) const { return directory.filePath(name); }
    QStringList names() const { return QDir(directory.path()).entryList(QDir::Files); }

    QTemporaryDir directory;
    CardStore store{directory.path(), int64_t{1} << 30};
    MinuteRecorder recorder{&store, kFormat};
};

std::vector<EncodedFrame> read(const QString& path) {
    RecordingReader reader;
    std::vector<EncodedFrame> frames;
    if (reader.open(path).isEmpty()) {
        while (const auto frame = reader.next())
            frames.push_back(*frame);
    }
    return frames;
}

std::vector<EncodedFrame> of(Medium medium, const std::vector<EncodedFrame>& frames) {
    std::vector<EncodedFrame> some;
    std::copy_if(frames.begin(), frames.end(), std::back_inserter(some),
                 [medium](const EncodedFrame& frame) { return frame.medium == medium; });
    return some;
}

}  // namespace

class RecordingTest : public QObject {
    Q_OBJECT

private slots:
    void stream_comesBackAsItWasSent_data() {
        QTest::addColumn<int>("video");
        QTest::addColumn<int>("audio");
        QTest::newRow("h264, aac") << int(AV_CODEC_ID_H264) << int(AV_CODEC_ID_AAC);
        QTest::newRow("hevc, alaw") << int(AV_CODEC_ID_HEVC) << int(AV_CODEC_ID_PCM_ALAW);
    }

    void stream_comesBackAsItWasSent() {
        QFETCH(int, video);
        QFETCH(int, audio);
        const auto sent = test::quickStream(130, AVCodecID(video), AVCodecID(audio));
        Card card;
        card.record(sent);
        card.recorder.close();
        QCOMPARE(runsOf(card.store), Runs({{kFirst, 3}}));
        std::vector<EncodedFrame> got;
        for (int minute = 0; minute < 3; ++minute) {
            const int64_t startSec = kFirst + minute * kRecordingSec;
            auto frames = read(card.path(recordingName(startSec)));
            QCOMPARE(test::faultOf(of(Medium::kVideo, frames)), std::string());
            for (EncodedFrame& frame : frames) {
                frame.timeUs += startSec * kSecond - kOriginUs;
                got.push_back(frame);
            }
        }
        QCOMPARE(got.size(), sent.size());
        for (size_t i = 0; i < got.size(); ++i) {
            const bool isSound = sent[i].medium == Medium::kAudio;
            QVERIFY(std::abs(got[i].timeUs - sent[i].timeUs) <= (isSound ? 400'000 : 1000));
            QCOMPARE(got[i].codecId, sent[i].codecId);
            QCOMPARE(got[i].isKey, sent[i].isKey);
            if (isSound)
                QVERIFY(*got[i].bytes == *sent[i].bytes);
        }
        const auto pictures = test::decode(of(Medium::kVideo, got));
        QCOMPARE(pictures.size(), size_t(130 * 5));
        for (size_t i = 0; i < pictures.size(); ++i)
            QCOMPARE(test::clockOf(*pictures[i]).value_or(1), uint64_t(i) * 200'000);
    }

    void minutes_areNamedByTheClock_data() {
        QTest::addColumn<int>("pauseSec");  // of the stream, from second 70 on
        QTest::addColumn<int>("stepSec");   // of the clock, at second 70
        QTest::addColumn<Runs>("runs");
        QTest::newRow("steady") << 0 << 0 << Runs({{kFirst, 3}});
        QTest::newRow("adjusted") << 0 << 1 << Runs({{kFirst, 3}});
        QTest::newRow("pause") << 300 << 0 << Runs({{kFirst, 2}, {kFirst + 370, 1}});
        QTest::newRow("set ahead") << 0 << 3600 << Runs({{kFirst, 2}, {kFirst + 3670, 1}});
        QTest::newRow("set back") << 0 << -3600 << Runs({{kFirst - 3530, 1}, {kFirst, 2}});
    }

    void minutes_areNamedByTheClock() {
        QFETCH(int, pauseSec);
        QFETCH(int, stepSec);
        Card card;
        int requests = 0;
        for (EncodedFrame frame : test::quickStream(129)) {
            const bool isLate = frame.timeUs >= 70 * kSecond;
            frame.timeUs += isLate ? pauseSec * kSecond : 0;
            card.recorder.take(frame, kOriginUs + (isLate ? stepSec * kSecond : 0));
            requests += card.recorder.takeKeyRequest();
        }
        card.recorder.close();
        QTEST(runsOf(card.store), "runs");
        QVERIFY(requests >= 1 && requests <= 2);
    }

    void unfinishedRecording_isKeptIfItPlays_afterACrash_data() {
        QTest::addColumn<double>("part");
        QTest::addColumn<int>("pictures");  // at least; 0: removed
        QTest::newRow("empty") << 0.0 << 0;
        QTest::newRow("header") << 0.01 << 0;
        QTest::newRow("half") << 0.5 << 20;
        QTest::newRow("all but the end") << 1.0 << 45;
    }

    void unfinishedRecording_isKeptIfItPlays_afterACrash() {
        QFETCH(double, part);
        QFETCH(int, pictures);
        Card card;
        {
            MinuteRecorder crashing(&card.store, kFormat);
            for (const EncodedFrame& frame : test::quickStream(10))
                crashing.take(frame, kOriginUs);
        }
        const QString name = unfinishedName(kFirst);
        QCOMPARE(card.names(), QStringList(name));
        QFile file(card.path(name));
        QVERIFY(file.resize(qint64(part * double(file.size()))));
        const test::WarningCount warnings;
        CardStore after(card.directory.path(), 1 << 30);
        after.refresh();
        QCOMPARE(warnings.value(), pictures > 0 ? 0 : 1);
        QCOMPARE(card.names(), pictures > 0 ? QStringList(recordingName(kFirst)) : QStringList());
        QVERIFY(int(test::decode(read(card.path(recordingName(kFirst)))).size()) >= pictures);
    }

    void oldestRecordings_makeRoom_andNothingElse() {
        Card card;
        const QString alien = QStringLiteral("20200913T122717Z.mkv.txt");
        const QString old = recordingName(kFirst - 60), newer = recordingName(kFirst);
        for (const QString& name : {alien, old, newer}) {
            QFile file(card.path(name));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(1'000'000));
        }
        CardStore store(card.directory.path(), 2'500'000);
        store.refresh();
        QCOMPARE(store.space().totalBytes, int64_t{2'500'000});
        QVERIFY(store.makeRoom(500'000));
        QCOMPARE(card.names(), QStringList({old, newer, alien}));
        QVERIFY(store.makeRoom(500'001));
        QCOMPARE(card.names(), QStringList({newer, alien}));
        QCOMPARE(store.space().freeBytes, int64_t{1'500'000});
        QVERIFY(store.format());
        QCOMPARE(card.names(), QStringList(alien));
    }

    void fault_isLoggedOnce_andRecordingGoesOnAfterIt() {
        Card card;
        // A file that takes nothing, as on a full disk.
        QVERIFY(QFile::link(QStringLiteral("/dev/full"), card.path(unfinishedName(kFirst))));
        const test::WarningCount warnings;
        const auto frames = test::quickStream(70);
        card.record(frames);
        card.recorder.close();
        QCOMPARE(warnings.value(), 1);
        const Runs runs = runsOf(card.store);
        QVERIFY(!runs.isEmpty() && runs.first().first > kFirst);
        QVERIFY(card.directory.remove());
        for (int look = 0; look < 3; ++look)
            QCOMPARE(card.store.refresh(), CardStore::Presence::kAbsent);
        QCOMPARE(warnings.value(), 2);
        QVERIFY(!card.store.format() && QDir().mkpath(card.directory.path()));
        QCOMPARE(card.store.refresh(), CardStore::Presence::kNew);
        card.record(frames);
        card.recorder.close();
        QCOMPARE(runsOf(card.store), Runs({{kFirst, 2}}));
        QVERIFY(card.directory.remove());
    }

    void madeCard_showsTheTimesOfItsFiles_andIsOnlyToppedUp() {
        Card card;
        DemoFeedConfig config;
        config.format = {128, 80, 2, 100'000};
        config.audioCodec = AV_CODEC_ID_PCM_ALAW;
        QCOMPARE(makeCard(card.directory.path(), 2, config), QString());
        const QStringList names = card.names();
        QVERIFY(names.size() >= 8 && names.size() <= 19);
        for (const QString& name : names) {
            const auto frames = read(card.path(name));
            const int64_t startUs =
                readRecordingName(name).value_or(RecordingName()).startSec * kSecond;
            const auto pictures = test::decode(of(Medium::kVideo, frames));
            QCOMPARE(pictures.size(), size_t(120));
            for (size_t i = 0; i < pictures.size(); ++i)
                QCOMPARE(test::clockOf(*pictures[i]).value_or(0),
                         (uint64_t(startUs) + i * 500'000) & kPictureClockMask);
            QVERIFY(of(Medium::kAudio, frames).size() > 1480);
        }
        const QFileInfo first(card.path(names.first()));
        QVERIFY(QFile::remove(card.path(names.last())));
        QCOMPARE(makeCard(card.directory.path(), 2, config), QString());
        QCOMPARE(QFileInfo(first.filePath()).lastModified(), first.lastModified());
        QVERIFY(card.names().size() >= names.size());
    }
};

static const test::RegisterSuite<RecordingTest> s_recordingTest;

#include "recording_test.moc"
