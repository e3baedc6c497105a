#include "media/device_player.h"
#include "media/player_recorder.h"
#include "media/recording_file.h"
#include "media/recording_reader.h"
#include "support/encoded_clip.h"
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
    std::atomic<double> firstStepSec{0.0}, lastStepSec{0.0};
    std::atomic<int> packets{0};
    std::atomic<int> failures{0};

    static int32_t event(void* user, int32_t event, double seconds, double) {
        auto* told = static_cast<Told*>(user);
        if (event == KvPlayerRecorder::kProgress) {
            told->lastStepSec = seconds - told->seconds;
            told->seconds = seconds;
            if (++told->packets == 2)
                told->firstStepSec = seconds;
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
    void kill() {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
    QByteArrayList m_lines;
};

/// A small file system of its own, where that is allowed.
class SmallDisk {
public:
    explicit SmallDisk(const QString& folder) : m_folder(folder) {
        m_isMounted =
            QProcess::execute(QStringLiteral("mount"),
                              {QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"),
                               QStringLiteral("size=100k"), QStringLiteral("tmpfs"), folder}) == 0;
    }
    ~SmallDisk() {
        if (m_isMounted)
            QProcess::execute(QStringLiteral("umount"), {m_folder});
    }
    bool isMounted() const { return m_isMounted; }

private:
    const QString m_folder;
    bool m_isMounted = false;
};

/// Recordings opened again by this and another program.
class RecordingTest : public QObject {
    Q_OBJECT
private slots:
    void recording_opensWithItsFrames_whenMadeFromTheDemoCamera_data();
    void recording_opensWithItsFrames_whenMadeFromTheDemoCamera();
    void recording_playsUpToTheLastSeconds_whenKilled();
    void recording_isPlayable_whenDiskIsFull_data();
    void recording_isPlayable_whenDiskIsFull();
    void hourOfRecording_keepsSoundWithThePicture();
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
        player.stats().picturesDecoded > 0 && player.stats().audioFramesReceived > 5, 20000);
    QCOMPARE(player.startRecord(path, QStringLiteral("mp4"), 3600.0), 0);
    QTRY_VERIFY_WITH_TIMEOUT(told.seconds >= kSeconds, 60000);
    player.shutdown();

    QCOMPARE(told.failures.load(), 0);
    const RecordingReader whole(path, RecordingReader::kIgnoreEdits);
    const RecordingReader shown(path);
    QVERIFY(whole.isOpen() && shown.isOpen());
    QCOMPARE(framesByFfprobe(path), QByteArray::number(shown.packets(0)));
    QCOMPARE(boxesOf(path), QByteArray("ftyp mdat moov"));
    QCOMPARE(int(shown.codec(0).codec_id),
             int(codec == QLatin1String("h264") ? AV_CODEC_ID_H264 : AV_CODEC_ID_HEVC));
    QCOMPARE(int(shown.codec(1).codec_id), int(AV_CODEC_ID_AAC));
    // A camera short of processor time leaves pictures out, so that only the recorder knows how
    // many there were, and when. The opening key picture is not among them.
    QCOMPARE(whole.packets(0), told.packets - 1);
    const double endSec = told.seconds + told.lastStepSec;
    QVERIFY(std::abs(whole.endSec(0) - (endSec - told.firstStepSec)) < 0.002);
    const int hidden = whole.packets(0) - shown.packets(0);
    QVERIFY(hidden > 0);
    const double hiddenSec = told.firstStepSec + whole.sec(0, static_cast<size_t>(hidden));
    QVERIFY(std::abs(shown.durationSec() - (endSec - hiddenSec)) < kFrameSec);
    QVERIFY(std::abs(shown.endSec(1) - shown.endSec(0)) <= 5.0);

    RecordingPictures pictures(path);
    const double middleSec = shown.durationSec() / 2;
    const auto first = pictures.at(0.0), middle = pictures.at(middleSec);
    QVERIFY(first && middle && first->sec < 0.002 && middle->sec >= middleSec - 0.002);
    const double clockSec = static_cast<double>(middle->clock - first->clock) / 1e6;
    QVERIFY(std::abs(clockSec - (middle->sec - first->sec)) < 3 * kFrameSec);
}

void RecordingTest::recording_playsUpToTheLastSeconds_whenKilled() {
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("killed.mp4"));
    RecordingChild child(path);
    QVERIFY(child.awaitLine("waiting"));
    child.kill();

    const RecordingReader reader(path);
    QVERIFY(reader.isOpen() && boxesOf(path).startsWith("ftyp moov moof mdat"));
    QVERIFY(reader.lastSec(0) > kSeconds - 3.0 && reader.lastSec(1) > kSeconds - 3.0);
    RecordingPictures pictures(path);
    for (const double sec : {6.0, 12.3, kSeconds - 3.1}) {
        const auto picture = pictures.at(sec);
        QVERIFY(picture && std::abs(picture->sec - sec) < kFrameSec);
        QCOMPARE(picture->clock, std::llround(picture->sec * kChildPicturesPerSec));
    }
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
        disk = std::make_unique<SmallDisk>(directory.path());
    if (disk && !disk->isMounted())
        QSKIP("this user may not mount anything");
    const QString path = directory.filePath(QStringLiteral("full.mp4"));
    RecordingChild child(path, isOwnDisk ? -1 : kFullBytes);
    QVERIFY(child.awaitLine("ended") && child.lines().contains("failed"));
    child.kill();

    const RecordingReader whole(path, RecordingReader::kIgnoreEdits);
    QVERIFY(whole.isOpen() && whole.packets(0) > 60);
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
    // The first key picture that is shown comes after two seconds.
    double worstSec = 0.0;
    for (size_t i = 0; i < heardSecs.size(); ++i)
        worstSec = std::max(worstSec, std::abs(heardSecs[i] - (burstSecs[i] - 2.0)));
    QVERIFY2(worstSec < 0.05, qPrintable(QString::number(worstSec)));
    QVERIFY(std::abs(reader.lastSec(0) - (3600.0 - kFrameSec - 2.0)) < 0.002);
}

static orvelle::test::RegisterSuite<RecordingTest> s_suite;

#include "recording_test.moc"
