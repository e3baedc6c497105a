#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>
#include <QtEndian>

#include "camera/camera_house.h"
#include "camera/card/card_messages.h"
#include "camera/card/recording_name.h"

using namespace orvelle;
using test::Client;
using test::demo;
using test::House;
using test::kTimeoutMs;

namespace {

constexpr int64_t kSecond = 1'000'000;
constexpr int64_t kStart = 1'600'000'020;  ///< 2020-09-13 12:27:00 UTC
constexpr int kMinute = 60;

QByteArray bytes32(qint64 value) {
    QByteArray bytes(4, '\0');
    qToLittleEndian(quint32(value), bytes.data());
    return bytes;
}

QByteArray timeDay(int64_t sec) {
    const QDateTime time = QDateTime::fromSecsSinceEpoch(sec, Qt::UTC);
    QByteArray bytes(8, '\0');
    qToLittleEndian(quint16(time.date().year()), bytes.data());
    const int fields[] = {time.date().month(), time.date().day(),    time.date().dayOfWeek(),
                          time.time().hour(),  time.time().minute(), time.time().second()};
    std::copy(std::begin(fields), std::end(fields), bytes.begin() + 2);
    return bytes;
}

QByteArray playRequest(PlayCommand command, const QByteArray& time = QByteArray(8, '\0')) {
    return bytes32(1) + bytes32(qint64(command)) + bytes32(0) + time + bytes32(0);
}

QByteArray playAnswer(PlayCommand command, int result) {
    return bytes32(qint64(command)) + bytes32(result);
}

/// A card with names of recordings only; what is listed, not played.
void putNames(const QString& directory, const std::vector<int64_t>& starts) {
    for (const int64_t startSec : starts)
        QFile(directory + QLatin1Char('/') + recordingName(startSec)).open(QIODevice::WriteOnly);
}

/// A recording of this length that starts at kStart.
void putRecording(const QString& directory, int seconds) {
    CardStore store(directory, int64_t{1} << 30);
    store.refresh();
    MinuteRecorder recorder(&store, {128, 80, 5, 100'000});
    for (const EncodedFrame& frame :
         test::quickStream(seconds, AV_CODEC_ID_H264, AV_CODEC_ID_PCM_ALAW))
        recorder.take(frame, kStart * kSecond);
    recorder.close();
}

}  // namespace

class CardTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        IOTC_Initialize2(0);
        avInitialize(kMaxLinkChannels);
    }
    void cleanupTestCase() { LinkClient::instance().shutDown(); }

    void list_holdsRunsWithinTheSpan_data() {
        QTest::addColumn<std::vector<int64_t>>("starts");
        QTest::addColumn<QByteArray>("span");
        QTest::addColumn<QByteArray>("answer");
        const QByteArray all = timeDay(kStart) + timeDay(kStart + 3 * 86'400);
        const auto run = [](int64_t startSec, int minutes) -> QByteArray {
            return bytes32(startSec) + bytes32(minutes);
        };
        const std::vector<int64_t> gap{kStart - 60, kStart, kStart + 60, kStart + 200};
        QTest::newRow("empty") << std::vector<int64_t>() << all << bytes32(0);
        QTest::newRow("gap") << gap << all << bytes32(2) + run(kStart, 2) + run(kStart + 200, 1);
        QTest::newRow("edges") << gap << timeDay(kStart - 60) + timeDay(kStart)
                               << bytes32(1) + run(kStart - 60, 2);
        QTest::newRow("no time") << gap << QByteArray(16, '\0') << bytes32(0);
        std::vector<int64_t> many;
        QByteArray newest = bytes32(173);
        for (int i = 0; i < 200; ++i) {
            many.push_back(kStart + i * 120);
            newest += i < 200 - 173 ? QByteArray() : run(many.back(), 1);
        }
        QTest::newRow("more than a message holds") << many << all << newest;
    }

    void list_holdsRunsWithinTheSpan() {
        const QTemporaryDir directory;
        QFETCH(std::vector<int64_t>, starts);
        QFETCH(QByteArray, span);
        putNames(directory.path(), starts);
        House house(demo(), directory.path());
        Client client(*house.camera);
        QVERIFY(client.send(IOTYPE_USER_IPCAM_LISTEVENT_VBK_REQ,
                            bytes32(0) + span + QByteArray("\x11\x01\0\0", 4)));
        const QByteArray answer = client.receiveControl(IOTYPE_USER_IPCAM_LISTEVENT_VBK_RESP);
        QVERIFY(answer.size() <= kMaxControlBytes);
        QTEST(answer, "answer");
    }

    void playback_runsFromTheKeyFrameBefore_toTheEndOfTheRecording() {
        const QTemporaryDir directory;
        putRecording(directory.path(), 6);
        putNames(directory.path(), {kStart + 60});
        House house(demo(), directory.path());
        Client client(*house.camera);
        const int number = start(client, 3);
        const auto channel = client.open(number);
        QByteArray end;
        const auto isOver = [&] {
            channel->frames(Medium::kVideo);
            if (end.isEmpty())
                end = client.receiveControl(kAnswer, 1);
            return !end.isEmpty();
        };
        QTRY_VERIFY_WITH_TIMEOUT(isOver(), kTimeoutMs);
        QCOMPARE(end, playAnswer(PlayCommand::kEnd, 0));
        const auto frames = channel->frames(Medium::kVideo);
        QCOMPARE(test::faultOf(frames), std::string());
        const auto pictures = test::decode(frames);
        QCOMPARE(pictures.size(), size_t(4 * 5));
        for (size_t i = 0; i < pictures.size(); ++i) {
            QCOMPARE(frames[i].timeUs, int64_t(2'000'000 + i * 200'000));
            QCOMPARE(test::clockOf(*pictures[i]).value_or(0), uint64_t(frames[i].timeUs));
        }
        const auto sound = channel->frames(Medium::kAudio);
        QCOMPARE(sound.size(), size_t(4 * 25));
        QCOMPARE(sound.front().timeUs, 2 * kSecond);
        // What is over can be stopped all the same; the next one gets another channel.
        QCOMPARE(ask(client, playRequest(PlayCommand::kStop)), playAnswer(PlayCommand::kStop, 0));
        QVERIFY(start(client, 0) > 0);
    }

    void grantedPlayback_fillsTheRoom_andRunsOnIntoTheNextRecording() {
        const QTemporaryDir directory;
        putRecording(directory.path(), 65);
        House house(demo(), directory.path());
        Client client(*house.camera);
        const int number = start(client, 50);
        QVERIFY(grant(client, number, 30) && grant(client, number + 1, 1000));
        const auto channel = client.open(number);
        const auto count = [&channel] {
            return channel->count(Medium::kVideo) + channel->count(Medium::kAudio);
        };
        QTRY_COMPARE_WITH_TIMEOUT(count(), size_t{30}, kTimeoutMs);
        QVERIFY(grant(client, number, 1000, 100));
        QCOMPARE(client.receiveControl(kAnswer, 700), QByteArray());
        QCOMPARE(count(), size_t{30});
        QVERIFY(grant(client, number, 1000));
        // All at once, and the end when all of it is here.
        QCOMPARE(client.receiveControl(kAnswer), playAnswer(PlayCommand::kEnd, 0));
        const auto frames = channel->frames(Medium::kVideo);
        QCOMPARE(frames.size(), size_t{15 * 5});
        for (size_t i = 0; i < frames.size(); ++i)
            QCOMPARE(frames[i].timeUs, int64_t(50 * kSecond + i * 200'000));
        QCOMPARE(channel->count(Medium::kAudio), size_t{15 * 25});
    }

    void grantedPlayback_goesOnWithWhatIsRecordedNow() {
        const QTemporaryDir directory;
        House house(demo(), directory.path());
        Client client(*house.camera);
        std::vector<RecordingRun> runs;
        const auto isListed = [&] {
            runs = house.card->store().runs(0, INT32_MAX);
            return !runs.empty();
        };
        QTRY_VERIFY_WITH_TIMEOUT(isListed(), kTimeoutMs);
        const auto request = playRequest(PlayCommand::kStart, timeDay(runs.front().startSec));
        int number = -1;
        const auto isStarted = [&] {
            const QByteArray answer = ask(client, request);
            number =
                answer.startsWith(bytes32(16)) ? qFromLittleEndian<qint32>(answer.data() + 4) : -1;
            return number > 0;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isStarted(), kTimeoutMs);
        QVERIFY(grant(client, number, 100'000));
        const auto channel = client.open(number);
        const auto playedUs = [&] {
            const auto frames = channel->frames(Medium::kVideo);
            return frames.empty() ? -1 : frames.back().timeUs;
        };
        // More than was there when it began, each picture once.
        QTRY_VERIFY_WITH_TIMEOUT(playedUs() > 3 * kSecond, kTimeoutMs);
        const auto frames = channel->frames(Medium::kVideo);
        QCOMPARE(test::faultOf(frames), std::string());
        for (size_t i = 1; i < frames.size(); ++i)
            QVERIFY(frames[i].timeUs > frames[i - 1].timeUs);
    }

    void playback_isRefused_data() {
        QTest::addColumn<QByteArray>("time");
        QTest::addColumn<int>("result");
        QTest::newRow("no card") << QByteArray() << int(kNoCard);
        const int none = kNoRecording;
        QTest::newRow("before") << timeDay(kStart - 1) << none;
        QTest::newRow("after") << timeDay(kStart + 60) << none;
        QTest::newRow("cannot be read") << timeDay(kStart + 59) << none;
        QTest::newRow("year 0") << QByteArray(8, '\0') << none;
        QTest::newRow("month 13") << timeDay(kStart).replace(2, 1, "\x0d") << none;
    }

    void playback_isRefused() {
        const QTemporaryDir directory;
        QFETCH(QByteArray, time);
        QFETCH(int, result);
        putNames(directory.path(), {kStart});
        House house(demo(), result == kNoCard ? QString() : directory.path());
        Client client(*house.camera);
        QCOMPARE(ask(client, playRequest(PlayCommand::kStart, time.leftJustified(8, '\0'))),
                 playAnswer(PlayCommand::kStart, result));
    }

    void stop_endsThePlayback_andAStartTheFormerOne() {
        const QTemporaryDir directory;
        putRecording(directory.path(), 50);
        House house(demo(), directory.path());
        Client client(*house.camera);
        const int first = start(client, 0);
        const auto former = client.open(first);
        QTRY_VERIFY_WITH_TIMEOUT(former->count(Medium::kVideo) > 0, kTimeoutMs);
        const int second = start(client, 10);
        QVERIFY(second > 0 && second != first);
        const auto channel = client.open(second);
        QTRY_VERIFY_WITH_TIMEOUT(channel->count(Medium::kVideo) > 0, kTimeoutMs);
        QCOMPARE(channel->frames(Medium::kVideo).front().timeUs, 10 * kSecond);
        const size_t before = former->count(Medium::kVideo);
        QCOMPARE(ask(client, playRequest(PlayCommand::kStop)), playAnswer(PlayCommand::kStop, 0));
        QVERIFY(before < 250 && former->count(Medium::kVideo) == before);
        // Another client plays on its own, whatever the first one did; it leaves without a word.
        for (int round = 0; round < 3; ++round) {
            Client leaving(*house.camera);
            const auto view = leaving.open(start(leaving, 0));
            QTRY_VERIFY_WITH_TIMEOUT(view->count(Medium::kVideo) > 0, kTimeoutMs);
        }
        // Nothing more was said to the first one.
        QVERIFY(start(client, 20) > 0);
    }

    void format_emptiesTheCard_andRecordingGoesOn() {
        const QTemporaryDir directory;
        const QString alien = directory.filePath(QStringLiteral("family.jpg"));
        QVERIFY(QFile(alien).open(QIODevice::WriteOnly));
        putNames(directory.path(), {kStart, kStart + kMinute});
        House house(demo(), directory.path());
        Client client(*house.camera);
        const auto isRecording = [&directory] {
            return !QDir(directory.path(), QStringLiteral("*.part")).isEmpty();
        };
        QTRY_VERIFY_WITH_TIMEOUT(isRecording(), kTimeoutMs);
        QVERIFY(client.send(IOTYPE_USER_IPCAM_FORMATEXTSTORAGE_REQ));
        QCOMPARE(client.receiveControl(IOTYPE_USER_IPCAM_FORMATEXTSTORAGE_RESP),
                 QByteArray(8, '\0'));
        QVERIFY(house.card->store().runs(0, kStart + kMinute).empty() && QFile::exists(alien));
        QTRY_VERIFY_WITH_TIMEOUT(isRecording(), kTimeoutMs);
    }

    void live_goesOn_whileTheCardIsPulled() {
        QTemporaryDir directory;
        const QString path = directory.filePath(QStringLiteral("card"));
        QVERIFY(QDir().mkpath(path));
        House house(demo(), path);
        Client client(*house.camera);
        QVERIFY(client.send(IOTYPE_USER_IPCAM_START));
        const auto space = [&client]() -> QByteArray {
            client.send(IOTYPE_USER_IPCAM_DEVINFO_REQ);
            return client.receiveControl(IOTYPE_USER_IPCAM_DEVINFO_RESP).mid(40, 8);
        };
        QCOMPARE(space().left(4), bytes32(1024));
        const test::WarningCount warnings;
        QVERIFY(QDir(path).removeRecursively());
        QTRY_COMPARE_WITH_TIMEOUT(space(), QByteArray(8, '\0'), kTimeoutMs);
        QVERIFY(client.send(IOTYPE_USER_IPCAM_LISTEVENT_VBK_REQ, QByteArray(24, '\0')));
        QCOMPARE(client.receiveControl(IOTYPE_USER_IPCAM_LISTEVENT_VBK_RESP),
                 QByteArray("\0\x01\0\0", 4));
        const size_t before = client.count(Medium::kVideo);
        QTRY_VERIFY_WITH_TIMEOUT(client.count(Medium::kVideo) > before + 10, kTimeoutMs);
        QCOMPARE(warnings.value(), 1);
        QVERIFY(QDir().mkpath(path));
        QTRY_COMPARE_WITH_TIMEOUT(space().left(4), bytes32(1024), kTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(!QDir(path).isEmpty(), kTimeoutMs);
    }

private:
    static constexpr uint32_t kAnswer = IOTYPE_USER_IPCAM_RECORD_PLAYCONTROL_RESP;

    static QByteArray ask(Client& client, const QByteArray& request) {
        client.send(IOTYPE_USER_IPCAM_RECORD_PLAYCONTROL, request);
        return client.receiveControl(kAnswer);
    }
    static bool grant(Client& client, int channel, qint64 frames, qint64 bytes = 1 << 30) {
        return client.send(IOTYPE_USER_IPCAM_RECORD_ROOM,
                           bytes32(channel) + bytes32(frames) + bytes32(bytes) + bytes32(0));
    }
    /// The channel on which the camera will play from that second of the recording.
    static int start(Client& client, int second) {
        const QByteArray answer =
            ask(client, playRequest(PlayCommand::kStart, timeDay(kStart + second)));
        return answer.startsWith(bytes32(16)) ? int(qFromLittleEndian<qint32>(answer.data() + 4))
                                              : -1;
    }
};

static const test::RegisterSuite<CardTest> s_cardTest;

#include "card_test.moc"
