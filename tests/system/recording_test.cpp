#include "media/device_player.h"
#include "media/player_recorder.h"
#include "support/suites.h"
#include "system/camera_set.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <cmath>

using orvelle::test::CameraSet;

namespace {

constexpr double kFramesPerSecond = 15.0;
constexpr double kSeconds = 20.0;

/// What a recorder told; written on its thread.
struct Told {
    std::atomic<double> seconds{0.0};
    std::atomic<int> packets{0};
    std::atomic<int> failures{0};

    static int32_t event(void* user, int32_t event, double seconds, double) {
        auto* told = static_cast<Told*>(user);
        if (event == KvPlayerRecorder::kProgress) {
            told->seconds = seconds;
            ++told->packets;
        } else if (event == KvPlayerRecorder::kFailed) {
            ++told->failures;
        }
        return 0;
    }
};

QJsonObject probe(const QString& path, const char* stream) {
    QProcess ffprobe;
    ffprobe.start(
        QStringLiteral("ffprobe"),
        {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-count_packets"),
         QStringLiteral("-select_streams"), QLatin1String(stream), QStringLiteral("-show_streams"),
         QStringLiteral("-of"), QStringLiteral("json"), path});
    ffprobe.waitForFinished();
    const QJsonDocument json = QJsonDocument::fromJson(ffprobe.readAllStandardOutput());
    return json.object()[QStringLiteral("streams")].toArray().at(0).toObject();
}

/// Recordings of the demo camera, opened again by another program.
class RecordingTest : public QObject {
    Q_OBJECT
private slots:
    void recording_opensWithItsFrames_whenMadeFromTheDemoCamera_data();
    void recording_opensWithItsFrames_whenMadeFromTheDemoCamera();
};

}  // namespace

void RecordingTest::recording_opensWithItsFrames_whenMadeFromTheDemoCamera_data() {
    QTest::addColumn<QString>("codec");
    QTest::newRow("H.264") << QStringLiteral("h264");
    QTest::newRow("HEVC") << QStringLiteral("hevc");
}

void RecordingTest::recording_opensWithItsFrames_whenMadeFromTheDemoCamera() {
    QFETCH(QString, codec);
    CameraSet cameras(QStringLiteral("RECORDING") + codec.toUpper(), 1,
                      {QStringLiteral("--demo"), QStringLiteral("--size"), QStringLiteral("360p"),
                       QStringLiteral("--codec"), codec});
    QVERIFY(cameras.connectAll());
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("recording.mp4"));
    Told told;
    KvDevicePlayer player;
    player.setDevice(cameras.devices().front());
    player.setVolume(0.0);
    player.setRecordCallback(&told, Told::event);
    QCOMPARE(player.play(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(
        player.stats().picturesDecoded > 0 && player.stats().audioFramesReceived > 20, 20000);
    QCOMPARE(player.startRecord(path, QStringLiteral("mp4"), 3600.0), 0);
    QTRY_VERIFY_WITH_TIMEOUT(told.seconds >= kSeconds, 60000);
    player.shutdown();

    QCOMPARE(told.failures.load(), 0);
    const QJsonObject video = probe(path, "v:0");
    const QJsonObject audio = probe(path, "a:0");
    QCOMPARE(video[QStringLiteral("codec_name")].toString(), codec);
    QCOMPARE(audio[QStringLiteral("codec_name")].toString(), QStringLiteral("aac"));
    const int frames = video[QStringLiteral("nb_read_packets")].toString().toInt();
    const double duration = video[QStringLiteral("duration")].toString().toDouble();
    // The opening key frame fixes the origin and is not written.
    QVERIFY(std::abs(frames - told.seconds * kFramesPerSecond) <= 2.0);
    QVERIFY(std::abs(duration - told.seconds) <= 2.0 / kFramesPerSecond);
    QVERIFY(std::abs(audio[QStringLiteral("duration")].toString().toDouble() - duration) <= 1.0);
}

static orvelle::test::RegisterSuite<RecordingTest> s_suite;

#include "recording_test.moc"
