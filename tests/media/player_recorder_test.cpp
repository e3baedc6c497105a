#include "media/player_recorder.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sys/resource.h>

#include <csignal>

#include "event_log.h"
#include "frames/ffmpeg_io_ptr.h"
#include "media/player_decoder.h"
#include "memory_input.h"
#include "support/suites.h"

using namespace orvelle;
using namespace orvelle::test;

namespace {

using Events = std::vector<int>;
using R = KvPlayerRecorder;

constexpr int kH264 = AV_CODEC_ID_H264;
constexpr double kStepSec = 1.0 / 15;
constexpr int kPictures = 45;

/// A camera, its decoder and a recorder; the camera's clock does not begin at 0.
struct Rig {
    QTemporaryDir dir;
    MemoryInput input;
    KvPlayerDecoder decoder;
    KvPlayerRecorder recorder{&input, &decoder};
    EventLog events{recorder};
    double cameraSec = 1000.0;

    Rig() {
        decoder.setInput(&input);
        decoder.start();
    }
    ~Rig() { recorder.stop(); }
    void record(const QString& name = QStringLiteral("clip.mp4")) {
        recorder.configure(dir.filePath(name), QStringLiteral("mp4"), 3600.0);
        recorder.start();
    }
    void give(const EncodedPicture& picture, int codec = kH264) {
        input.giveVideo(picture, codec, cameraSec);
        cameraSec += kStepSec;
    }
    /// Gives the key frame until the recorder tells something. Repeated at the same time it leaves
    /// no trace in the file.
    bool begin(const EncodedPicture& key, int codec = kH264, const char* name = "clip.mp4") {
        record(QLatin1String(name));
        return QTest::qWaitFor([&] {
            input.giveVideo(key, codec, cameraSec);
            return events.count(R::kCreated) + events.count(R::kFailed) > 0;
        });
    }
};

/// A file opened again and read to its end.
struct Reading {
    InputFormatPtr format;
    std::array<int, 2> packets{};

    explicit Reading(const QString& path) {
        AVFormatContext* opened = nullptr;
        avformat_open_input(&opened, path.toUtf8().constData(), nullptr, nullptr);
        format.reset(opened);
        const PacketPtr packet(av_packet_alloc());
        for (; format && av_read_frame(format.get(), packet.get()) == 0;
             av_packet_unref(packet.get()))
            ++packets.at(static_cast<size_t>(packet->stream_index));
    }
    const AVCodecParameters& codec(unsigned i) const { return *format->streams[i]->codecpar; }
};

class PlayerRecorderTest : public QObject {
    Q_OBJECT
private slots:
    void recording_opensAgain_data() {
        QTest::addColumn<int>("codec");
        QTest::addColumn<int>("soundCodec");
        QTest::addColumn<double>("clockStepSec");  // of the camera's clock in mid-recording
        const int aac = AV_CODEC_ID_AAC;
        QTest::newRow("HEVC") << int(AV_CODEC_ID_HEVC) << aac << 0.0;
        QTest::newRow("sound that MP4 cannot hold") << kH264 << int(AV_CODEC_ID_PCM_ALAW) << 0.0;
        QTest::newRow("clock set back") << kH264 << aac << -500.0;
        QTest::newRow("clock set ahead") << kH264 << aac << 1e9;
    }

    void recording_opensAgain() {
        QFETCH(const int, codec);
        QFETCH(const int, soundCodec);
        QFETCH(const double, clockStepSec);
        const bool isHevc = codec == AV_CODEC_ID_HEVC, hasSound = soundCodec == AV_CODEC_ID_AAC;
        const std::vector<EncodedPicture> clip = encodeClip({isHevc, 64, 48, kPictures, 15});
        // Silence in AAC LC, 16 kHz, mono: ADTS header and one frame of 64 ms.
        const QByteArray adts = QByteArray::fromHex("fff1604001bffc00c800802380");
        const std::vector<uint8_t> sound(adts.begin(), adts.end());
        Rig rig;
        rig.input.giveSound(sound, soundCodec, rig.cameraSec);
        QTRY_VERIFY(rig.decoder.audioParameters());
        QVERIFY(rig.begin(clip[0], codec));
        for (int i = 0; i < kPictures; ++i) {
            if (i == kPictures / 2)
                rig.cameraSec += clockStepSec;
            if (i < 16)
                rig.input.giveSound(sound, soundCodec, 1000.1 + i * 0.064);
            rig.give(clip[static_cast<size_t>(i)], codec);
        }
        const double expectedSec = (kPictures - 1) * kStepSec;
        QTRY_VERIFY(std::abs(rig.events.lastValue - expectedSec) < 0.01);
        rig.recorder.stop();
        QCOMPARE(rig.events.take(R::kProgress), (Events{R::kCreated, R::kEnded}));

        const Reading reading(rig.recorder.path());
        QVERIFY(reading.format);
        QCOMPARE(reading.format->nb_streams, hasSound ? 2U : 1U);
        QCOMPARE(reading.packets, (std::array<int, 2>{kPictures - 1, hasSound ? 16 : 0}));
        QVERIFY(std::abs(double(reading.format->duration) / 1e6 - expectedSec) < 2 * kStepSec);
        QCOMPARE(reading.codec(0).codec_tag,
                 isHevc ? MKTAG('h', 'v', 'c', '1') : MKTAG('a', 'v', 'c', '1'));
        QCOMPARE(reading.codec(0).width, 64);
        QVERIFY(reading.codec(0).extradata_size > 20 && reading.codec(0).extradata[0] == 1);
        if (hasSound)
            QVERIFY(reading.codec(1).sample_rate == 16000 && reading.codec(1).extradata_size >= 2);
    }

    void recording_beginsAtKeyFrame() {
        Rig rig;
        rig.record();
        rig.give(encodeClip({})[1]);
        rig.recorder.stop();
        QCOMPARE(rig.events.take(R::kProgress), Events{R::kEnded});
        QVERIFY(QDir(rig.dir.path()).isEmpty());
    }

    void recording_getsNumber_whenNameIsTaken() {
        Rig rig;
        QFile taken(rig.dir.filePath(QStringLiteral("clip.mp4")));
        QVERIFY(taken.open(QIODevice::WriteOnly) && taken.write("precious") == 8);
        taken.close();
        QVERIFY(rig.begin(encodeClip({})[0]));
        rig.recorder.stop();
        QCOMPARE(rig.recorder.path(), rig.dir.filePath(QStringLiteral("clip-2.mp4")));
        QVERIFY(QFileInfo(rig.recorder.path()).size() > 0);
        QCOMPARE(taken.size(), qint64{8});
    }

    void recording_fails_whenItCannotGoOn() {
        using Row = std::tuple<const char*, int, Events>;
        const EncodedPicture key = encodeClip({})[0];
        for (const auto& [name, codec, events] :
             {Row{"no/folder.mp4", kH264, {R::kFailed}},
              Row{"undecoded.mp4", AV_CODEC_ID_NONE, {R::kFailed}},
              Row{"change.mp4", kH264, {R::kCreated, R::kFailed, R::kEnded}}}) {
            Rig rig;
            QVERIFY(rig.begin(key, codec, name));
            rig.give(key, AV_CODEC_ID_HEVC);
            QTRY_VERIFY(!rig.recorder.isRecording());
            rig.recorder.stop();
            QCOMPARE(rig.events.take(R::kProgress), events);
        }
    }

    void recording_fails_whenDiskIsFull() {
        rlimit former{};
        getrlimit(RLIMIT_FSIZE, &former);
        const rlimit tiny{64 * 1024, former.rlim_max};
        std::signal(SIGXFSZ, SIG_IGN);
        EncodedPicture key = encodeClip({})[0];
        Rig rig;
        setrlimit(RLIMIT_FSIZE, &tiny);
        const bool isBegun = rig.begin(key);
        key.bytes.resize(80 * 1024, 0x80);
        for (int i = 0; i < 30; ++i)
            rig.give(key);
        const bool isEnded = QTest::qWaitFor([&] { return !rig.recorder.isRecording(); }, 20000);
        rig.recorder.stop();
        setrlimit(RLIMIT_FSIZE, &former);
        QVERIFY(isBegun && isEnded);
        QCOMPARE(rig.events.take(R::kProgress), (Events{R::kCreated, R::kFailed, R::kEnded}));
    }
};

}  // namespace

static const orvelle::test::RegisterSuite<PlayerRecorderTest> kRegistered;

#include "player_recorder_test.moc"
