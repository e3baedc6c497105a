#include "media/live/device_player.h"
#include "media/recording/fragment_finisher.h"
#include "media/recording/player_recorder.h"
#include "media/recording/recording_file.h"
#include "media/recording_reader.h"
#include "support/encoded_clip.h"
#include "support/small_disk.h"
#include "support/suites.h"
#include "system/camera_set.h"
#include "system/recording_child.h"
#include "system/recording_pictures.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <cmath>
#include <random>

#include "frames/input_packet.h"
#include "frames/parameter_sets.h"

using namespace orvelle;
using namespace orvelle::test;

namespace {

constexpr double kSeconds = 20.0;
constexpr double kFrameSec = 1.0 / 15;
constexpr int kFullBytes = 100 * 1024;

/// What a recorder told; written on its thread.
struct Told {
    std::atomic<double> seconds{0.0};
    std::atomic<double> lastStepSec{0.0};
    std::atomic<int> packets{0};
    std::atomic<int> failures{0};

    static int32_t event(void* user, int32_t event, double seconds, double) {
        auto* told = static_cast<Told*>(user);
        if (event == KvPlayerRecorder::kProgress) {
            told->lastStepSec = seconds - told->seconds;
            told->seconds = seconds;
            ++told->packets;
        } else if (event == KvPlayerRecorder::kFailed) {
            ++told->failures;
        }
        return 0;
    }
};

/// How many pictures another program decodes, and whatever it complains of.
QByteArray framesByFfprobe(const QString& path) {
    QProcess ffprobe;
    ffprobe.setProcessChannelMode(QProcess::MergedChannels);
    ffprobe.start(QStringLiteral("ffprobe"),
                  {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-count_frames"),
                   QStringLiteral("-select_streams"), QStringLiteral("v:0"),
                   QStringLiteral("-show_entries"), QStringLiteral("stream=nb_read_frames"),
                   QStringLiteral("-of"), QStringLiteral("csv=p=0"), path});
    return ffprobe.waitForFinished(60000) ? ffprobe.readAll().trimmed() : "no ffprobe";
}

/// The recording program; the file is its own.
class RecordingChild {
public:
    explicit RecordingChild(const QString& path, qint64 mostBytes = -1) {
        QStringList arguments{QStringLiteral("--record"), path};
        if (mostBytes >= 0)
            arguments << QString::number(mostBytes);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(), arguments);
    }
    ~RecordingChild() { kill(); }

    /// Reads on until the line has come.
    bool awaitLine(const QByteArray& line) {
        return waitUntil(60000,
                         [&] {
                             while (m_process.canReadLine())
                                 m_lines << m_process.readLine().trimmed();
                             return m_lines.contains(line) ||
                                    m_process.state() == QProcess::NotRunning;
                         }) &&
               m_lines.contains(line);
    }
    const QByteArrayList& lines() const { return m_lines; }
    /// The last whole second that it told.
    double recordedSec() const {
        double seconds = 0.0;
        for (const QByteArray& line : m_lines) {
            if (line.startsWith("recorded "))
                seconds = line.mid(9).toDouble();
        }
        return seconds;
    }
    void kill() {
        m_process.kill();
        m_process.waitForFinished();
        while (m_process.canReadLine())
            m_lines << m_process.readLine().trimmed();
    }

private:
    QProcess m_process;
    QByteArrayList m_lines;
};

/// Recordings opened again by this and another program.
class RecordingTest : public QObject {
    Q_OBJECT
private slots:
    void recording_holdsClickToStop_whateverTheStream_data();
    void recording_holdsClickToStop_whateverTheStream();
    void recording_playsUpToTheLastSeconds_whenKilled();
    void recording_isPlayable_whenDiskIsFull_data();
    void recording_isPlayable_whenDiskIsFull();
    void hourOfRecording_keepsSoundWithThePicture();
};

}  // namespace

void RecordingTest::recording_holdsClickToStop_whateverTheStream_data() {
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("sound");
    QTest::addColumn<int>("keySec");  // between key pictures; 2 is the demo scene's own
    QTest::newRow("H.264, AAC") << "h264"
                                << "aac" << 2;
    QTest::newRow("HEVC, A-law, rare key pictures") << "hevc"
                                                    << "alaw" << 10;
}

static QStringList words(const QString& text) {
    return text.split(QLatin1Char(' '));
}

/// The demo scene in a file whose key pictures stand that far apart.
static QString makeClip(const QString& folder, const QString& codec, int keySec) {
    const QString scene = folder + QStringLiteral("/scene.mp4");
    const QString clip = folder + QStringLiteral("/clip.mkv");
    const QString program =
        QCoreApplication::applicationDirPath() + QStringLiteral("/orvelle-camera");
    const QString make = QStringLiteral("--make-clip %1 --seconds 60 --size 360p");
    const QString rare =
        codec == QLatin1String("hevc")
            ? QStringLiteral(
                  "-c:v libx265 -preset ultrafast -x265-params "
                  "log-level=error:keyint=%1:min-keyint=%1:scenecut=0:bframes=0")
            : QStringLiteral(
                  "-c:v libx264 -preset ultrafast -g %1 -keyint_min %1 -sc_threshold 0 "
                  "-bf 0");
    const QString convert = QStringLiteral("-v error -y -i %1 %2 -c:a pcm_s16le -ar 8000 %3");
    const bool isMade =
        QProcess::execute(program, words(make.arg(scene))) == 0 &&
        QProcess::execute(QStringLiteral("ffmpeg"),
                          words(convert.arg(scene, rare.arg(keySec * 15), clip))) == 0;
    return isMade ? clip : QString();
}

void RecordingTest::recording_holdsClickToStop_whateverTheStream() {
    QFETCH(const QString, codec);
    QFETCH(const QString, sound);
    QFETCH(const int, keySec);
    const QTemporaryDir directory;
    const bool isDemo = keySec == 2;
    const QString source =
        isDemo ? QStringLiteral("--demo --size 360p --codec %1").arg(codec)
               : QStringLiteral("--source %1").arg(makeClip(directory.path(), codec, keySec));
    CameraSet cameras(QStringLiteral("RECORD%1%2").arg(codec.toUpper()).arg(keySec), 1,
                      words(QStringLiteral("%1 --sound %2").arg(source, sound)));
    QVERIFY(cameras.connectAll());
    const QString path = directory.filePath(QStringLiteral("recording.mp4"));
    Told told;
    KvDevicePlayer player;
    player.setDevice(cameras.devices().front());
    player.setVolume(0.0);
    player.setRecordCallback(&told, Told::event);
    QCOMPARE(player.play(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(
        player.stats().picturesDecoded > 20 && player.stats().audioFramesReceived > 5, 20000);
    QElapsedTimer sinceClick;
    sinceClick.start();
    const int64_t clickedUs = QDateTime::currentMSecsSinceEpoch() * 1000;
    QCOMPARE(player.startRecord(path, QStringLiteral("mp4"), 3600.0), 0);
    QTRY_VERIFY_WITH_TIMEOUT(sinceClick.elapsed() >= 1000 * kSeconds, 60000);
    const double watchedSec = sinceClick.elapsed() / 1000.0;
    player.shutdown();

    QCOMPARE(told.failures.load(), 0);
    const RecordingReader shown(path);
    QVERIFY(shown.isOpen() && shown.decodesAllPictures());
    QCOMPARE(framesByFfprobe(path), QByteArray::number(shown.packets(0)));
    QCOMPARE(boxesOf(path), QByteArray("ftyp mdat moov"));
    QCOMPARE(int(shown.codec(0).codec_id),
             int(codec == QLatin1String("h264") ? AV_CODEC_ID_H264 : AV_CODEC_ID_HEVC));
    QCOMPARE(int(shown.codec(1).codec_id), int(AV_CODEC_ID_AAC));
    // A camera short of processor time leaves pictures out, so that only the recorder knows how
    // many there were, and when.
    QCOMPARE(shown.packets(0), told.packets.load());
    const double endSec = told.seconds + told.lastStepSec;
    QVERIFY(std::abs(shown.endSec(0) - endSec) < 0.002);
    QVERIFY(std::abs(shown.durationSec() - endSec) < kFrameSec);
    QVERIFY(std::abs(shown.endSec(1) - shown.endSec(0)) <= 1.0);
    QVERIFY(std::abs(shown.sec(1, size_t{0}) - shown.sec(0, size_t{0})) <= 1.0);

    RecordingPictures pictures(path);
    const double middleSec = shown.durationSec() / 2;
    const auto first = pictures.at(0.0), middle = pictures.at(middleSec);
    QVERIFY(first && middle && first->sec < 0.002 && middle->sec >= middleSec - 0.002);
    // The picture that was on the screen at the click is there, and the last one as well.
    QVERIFY(!isDemo || first->clock <= clickedUs);
    QVERIFY2(shown.durationSec() > watchedSec - 0.5, qPrintable(QString::number(watchedSec)));
    qInfo("%s: watched %.2f s, timer %.2f s, file %.2f s with %d pictures", QTest::currentDataTag(),
          watchedSec, told.seconds.load(), shown.durationSec(), shown.packets(0));
    const double clockSec = static_cast<double>(middle->clock - first->clock) / 1e6;
    QVERIFY(!isDemo || std::abs(clockSec - (middle->sec - first->sec)) < 3 * kFrameSec);
}

/// Killed while it writes, each time somewhere else.
void RecordingTest::recording_playsUpToTheLastSeconds_whenKilled() {
    constexpr int kRuns = 20;
    const QTemporaryDir directory;
    std::mt19937 random(20);
    double worstSec = 0.0;
    for (int run = 0; run < kRuns; ++run) {
        const QString path = directory.filePath(QStringLiteral("killed%1.mp4").arg(run));
        RecordingChild child(path);
        const int second = std::uniform_int_distribution(2, int(kSeconds) - 2)(random);
        QVERIFY(child.awaitLine("recorded " + QByteArray::number(second)));
        QThread::usleep(std::uniform_int_distribution(0, 30000)(random));
        child.kill();
        const double recordedSec = child.recordedSec();

        const RecordingReader torn(path);
        QVERIFY(torn.isOpen() && boxesOf(path).startsWith("ftyp moov moof mdat"));
        worstSec = std::max(worstSec, recordedSec - torn.lastSec(0));
        QVERIFY2(recordedSec - torn.lastSec(0) < 2.0, qPrintable(QString::number(recordedSec)));
        QVERIFY(torn.lastSec(1) > torn.lastSec(0) - 1.0);
        // As it is, and once the next start has finished it.
        for (const char* boxes : {"ftyp moov", "ftyp mdat moov"}) {
            QVERIFY(boxesOf(path).startsWith(boxes));
            QCOMPARE(RecordingReader(path).packets(0), torn.packets(0));
            RecordingPictures pictures(path);
            for (const double sec : {0.0, torn.lastSec(0) / 2, torn.lastSec(0)}) {
                const auto picture = pictures.at(sec);
                QVERIFY(picture && std::abs(picture->sec - sec) < kFrameSec);
                QCOMPARE(picture->clock, std::llround(picture->sec * kChildPicturesPerSec));
            }
            FragmentFinisher(path).finish();
        }
    }
    qInfo("at most %.2f s were lost in %d kills", worstSec, kRuns);
}

void RecordingTest::recording_isPlayable_whenDiskIsFull_data() {
    QTest::addColumn<bool>("isOwnDisk");
    QTest::newRow("limit of the file's size") << false;
    QTest::newRow("disk of 100 KB") << true;
}

void RecordingTest::recording_isPlayable_whenDiskIsFull() {
    QFETCH(const bool, isOwnDisk);
    const QTemporaryDir directory;
    std::unique_ptr<SmallDisk> disk;
    if (isOwnDisk)
        disk = std::make_unique<SmallDisk>(directory.path(), kFullBytes / 1024);
    if (disk && !disk->isMounted())
        QSKIP("this user may not mount anything");
    const QString path = directory.filePath(QStringLiteral("full.mp4"));
    RecordingChild child(path, isOwnDisk ? -1 : kFullBytes);
    QVERIFY(child.awaitLine("ended") && child.lines().contains("failed"));
    child.kill();

    const RecordingReader whole(path);
    QVERIFY(whole.isOpen() && whole.packets(0) > 60 && whole.decodesAllPictures());
    QVERIFY(QFileInfo(path).size() <= kFullBytes);
    RecordingPictures pictures(path);
    QVERIFY(pictures.at(0.0));
}

void RecordingTest::hourOfRecording_keepsSoundWithThePicture() {
    const std::vector<EncodedPicture> clip = encodeClip({false, 64, 48, 30, 30});
    const std::vector<uint8_t>& key = clip[0].bytes;
    StreamParameters video, sound;
    video.codec.reset(avcodec_parameters_alloc());
    video.codec->codec_type = AVMEDIA_TYPE_VIDEO;
    video.codec->codec_id = AV_CODEC_ID_H264;
    video.codec->width = 64;
    video.codec->height = 48;
    setExtradata(*video.codec, parameterSets(AV_CODEC_ID_H264, key.data(), key.size()));
    sound.codec.reset(avcodec_parameters_alloc());
    sound.codec->codec_type = AVMEDIA_TYPE_AUDIO;
    sound.codec->codec_id = AV_CODEC_ID_PCM_ALAW;
    sound.codec->sample_rate = 8000;
    av_channel_layout_default(&sound.codec->ch_layout, 1);
    // The samples come a thousandth slower than they should: 3.6 s an hour.
    constexpr double kBlockSec = 0.5 * 1.001;
    constexpr int kBursts = 3600 / 60;
    const std::vector<uint8_t> silence(4000, 0xD5);
    std::vector<uint8_t> burst = silence;
    for (size_t i = 0; i < 400; ++i)
        burst[i] = i / 8 % 2 ? 0x2A : 0xAA;

    const QTemporaryDir directory;
    RecordingFile file;
    QCOMPARE(file.create(directory.filePath(QStringLiteral("hour.mp4")), QStringLiteral("mp4"),
                         video, sound, nullptr),
             0);
    const auto give = [&](const std::vector<uint8_t>& bytes, bool isKey, int codec, double sec) {
        const bool isVideo = codec == AV_CODEC_ID_H264;
        const auto packet = KvBasePlayerInputPacket::copyOf(
            bytes.data(), int(bytes.size()), isKey, codec,
            isVideo ? KvBasePlayerInputPacket::kVideo : KvBasePlayerInputPacket::kAudio, sec);
        return isVideo ? file.writeVideo(*packet) : file.writeSound(*packet);
    };
    std::vector<double> burstSecs;
    int blocks = 0;
    for (int i = 0; i < 3600 * 15; ++i) {
        const EncodedPicture& picture = clip[static_cast<size_t>(i % 30)];
        QCOMPARE(give(picture.bytes, picture.isKey, AV_CODEC_ID_H264, 50.0 + i * kFrameSec), 0);
        for (; blocks * kBlockSec <= i * kFrameSec; ++blocks) {
            const bool isBurst = blocks % 119 == 30;
            if (isBurst)
                burstSecs.push_back(blocks * kBlockSec);
            QCOMPARE(give(isBurst ? burst : silence, true, AV_CODEC_ID_PCM_ALAW,
                          50.0 + blocks * kBlockSec),
                     0);
        }
    }
    const QString path = file.path();
    QElapsedTimer closing;
    closing.start();
    QCOMPARE(file.close(), 0);
    qInfo("an hour of %lld KB is closed in %lld ms", QFileInfo(path).size() / 1024,
          closing.elapsed());

    const RecordingReader reader(path);
    QVERIFY(reader.isOpen() && burstSecs.size() >= kBursts);
    const std::vector<double> heardSecs = reader.burstSecs();
    QCOMPARE(heardSecs.size(), burstSecs.size());
    double worstSec = 0.0;
    for (size_t i = 0; i < heardSecs.size(); ++i)
        worstSec = std::max(worstSec, std::abs(heardSecs[i] - burstSecs[i]));
    QVERIFY2(worstSec < 0.05, qPrintable(QString::number(worstSec)));
    QVERIFY(std::abs(reader.lastSec(0) - (3600.0 - kFrameSec)) < 0.002);
}

static orvelle::test::RegisterSuite<RecordingTest> s_suite;

#include "recording_test.moc"
