#include "media/player_recorder.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sys/resource.h>

#include <csignal>
#include <cstring>

#include "encoded_clip.h"
#include "frames/ffmpeg_io_ptr.h"
#include "media/player_decoder.h"
#include "media/recording_clock.h"
#include "memory_input.h"
#include "support/suites.h"

using namespace orvelle;
using namespace orvelle::test;

Q_DECLARE_METATYPE(std::vector<int>)
Q_DECLARE_METATYPE(std::vector<double>)

namespace {

using Bytes = std::vector<uint8_t>;

constexpr double kStepSec = 1.0 / 15;
constexpr int kPictures = 45;

/// A camera, its decoder and a recorder; pictures are 1/15 s apart from a time far from 0.
struct Rig {
    QTemporaryDir dir;
    MemoryInput input;
    KvPlayerDecoder decoder;
    KvPlayerRecorder recorder{&input, &decoder};
    std::mutex mutex;
    std::vector<int> events;
    std::atomic<double> recordedSec{0.0};
    double cameraSec = 1000.0;

    Rig() {
        decoder.setInput(&input);
        decoder.start();
        recorder.setCallback(this, [](void* user, int32_t event, double a, double) -> int32_t {
            static_cast<Rig*>(user)->note(event, a);
            return 0;
        });
    }
    void note(int event, double seconds) {
        if (event == KvPlayerRecorder::kProgress) {
            recordedSec = seconds;
            return;
        }
        std::lock_guard<std::mutex> lock(mutex);
        events.push_back(event);
    }
    std::vector<int> seen() {
        std::lock_guard<std::mutex> lock(mutex);
        return events;
    }
    void record(const QString& path) {
        recorder.configure(path, QStringLiteral("mp4"), 3600.0);
        recorder.start();
    }
    /// Starts and waits for the file. A key frame given again at the same time leaves no trace in
    /// it.
    bool recordFrom(const EncodedPicture& key, int codec) {
        record();
        return QTest::qWaitFor([&] {
            input.giveVideo(key, codec, cameraSec);
            return !seen().empty();
        });
    }
    void record() { record(dir.filePath(QStringLiteral("clip.mp4"))); }
    void give(const std::vector<EncodedPicture>& clip, int codec) {
        for (const EncodedPicture& picture : clip) {
            input.giveVideo(picture, codec, cameraSec);
            cameraSec += kStepSec;
        }
    }
};

/// One file opened again and read to its end.
struct Reading {
    InputFormatPtr format;
    int packets[2] = {0, 0};

    explicit Reading(const QString& path) {
        AVFormatContext* opened = nullptr;
        avformat_open_input(&opened, path.toUtf8().constData(), nullptr, nullptr);
        format.reset(opened);
        const PacketPtr packet(av_packet_alloc());
        while (format && av_read_frame(format.get(), packet.get()) == 0) {
            ++packets[packet->stream_index & 1];
            av_packet_unref(packet.get());
        }
    }
    const AVCodecParameters& codec(unsigned i) const { return *format->streams[i]->codecpar; }
    double durationSec() const { return format->duration / double(AV_TIME_BASE); }
};

/// AAC packets of one second at 16 kHz with ADTS headers.
std::vector<Bytes> encodeAac() {
    std::vector<Bytes> packets;
    CodecContextPtr context(avcodec_alloc_context3(avcodec_find_encoder(AV_CODEC_ID_AAC)));
    context->sample_rate = 16000;
    context->sample_fmt = AV_SAMPLE_FMT_FLTP;
    av_channel_layout_default(&context->ch_layout, 1);
    avcodec_open2(context.get(), nullptr, nullptr);
    FramePtr frame(av_frame_alloc());
    frame->format = AV_SAMPLE_FMT_FLTP;
    frame->nb_samples = context->frame_size;
    av_channel_layout_default(&frame->ch_layout, 1);
    av_frame_get_buffer(frame.get(), 0);
    std::memset(frame->data[0], 0, static_cast<size_t>(frame->linesize[0]));
    const PacketPtr packet(av_packet_alloc());
    while (packets.size() < 16) {
        avcodec_send_frame(context.get(), frame.get());
        while (avcodec_receive_packet(context.get(), packet.get()) == 0) {
            const int size = packet->size + 7;
            // AAC LC, 16 kHz, mono.
            Bytes bytes = {0xFF,
                           0xF1,
                           0x60,
                           static_cast<uint8_t>(0x40 | size >> 11),
                           static_cast<uint8_t>(size >> 3),
                           static_cast<uint8_t>((size & 7) << 5 | 0x1F),
                           0xFC};
            bytes.insert(bytes.end(), packet->data, packet->data + packet->size);
            packets.push_back(std::move(bytes));
            av_packet_unref(packet.get());
        }
    }
    return packets;
}

class PlayerRecorderTest : public QObject {
    Q_OBJECT
private slots:
    void recording_opensAgain_data();
    void recording_opensAgain();
    void recording_beginsAtKeyFrame();
    void recording_getsNumber_whenNameIsTaken();
    void recording_fails_whenItCannotGoOn_data();
    void recording_fails_whenItCannotGoOn();
    void recording_fails_whenDiskIsFull();
    void clock_onlyRises_data();
    void clock_onlyRises();
};

void PlayerRecorderTest::recording_opensAgain_data() {
    QTest::addColumn<bool>("isHevc");
    QTest::addColumn<int>("soundCodec");
    QTest::addColumn<bool>("hasSoundTrack");
    QTest::addColumn<double>("clockStepSec");  // of the camera's clock in mid-recording
    QTest::newRow("H.264, AAC") << false << int(AV_CODEC_ID_AAC) << true << 0.0;
    QTest::newRow("HEVC, AAC") << true << int(AV_CODEC_ID_AAC) << true << 0.0;
    QTest::newRow("sound that MP4 cannot hold")
        << false << int(AV_CODEC_ID_PCM_ALAW) << false << 0.0;
    QTest::newRow("no sound") << false << int(AV_CODEC_ID_NONE) << false << 0.0;
    QTest::newRow("clock set back") << false << int(AV_CODEC_ID_AAC) << true << -500.0;
    QTest::newRow("clock set ahead") << false << int(AV_CODEC_ID_AAC) << true << 1e9;
}

void PlayerRecorderTest::recording_opensAgain() {
    QFETCH(const bool, isHevc);
    QFETCH(const int, soundCodec);
    QFETCH(const bool, hasSoundTrack);
    QFETCH(const double, clockStepSec);
    const int codec = isHevc ? AV_CODEC_ID_HEVC : AV_CODEC_ID_H264;
    const std::vector<EncodedPicture> clip = encodeClip({isHevc, 64, 48, kPictures, 15});
    const std::vector<Bytes> sound =
        soundCodec == AV_CODEC_ID_AAC ? encodeAac() : std::vector<Bytes>(16, Bytes(512, 0xD5));
    Rig rig;
    // The decoder knows the sound before the recording begins, as when somebody watches.
    rig.input.giveSound(sound[0], soundCodec, rig.cameraSec);
    if (soundCodec != AV_CODEC_ID_NONE)
        QTRY_VERIFY(rig.decoder.audioParameters());
    QVERIFY(rig.recordFrom(clip[0], codec));
    const double startSec = rig.cameraSec;
    for (size_t i = 0; i < clip.size(); ++i) {
        if (i == clip.size() / 2)
            rig.cameraSec += clockStepSec;
        rig.give({clip[i]}, codec);
        if (i < sound.size())
            rig.input.giveSound(sound[i], soundCodec, startSec + 0.1 + i * 0.064);
    }
    const double expectedSec = (kPictures - 1) * kStepSec;
    QTRY_VERIFY(std::abs(rig.recordedSec - expectedSec) < 0.01);
    rig.recorder.stop();
    QCOMPARE(rig.seen(), (std::vector<int>{KvPlayerRecorder::kCreated, KvPlayerRecorder::kEnded}));

    const Reading reading(rig.recorder.path());
    QVERIFY(reading.format);
    QCOMPARE(reading.format->nb_streams, hasSoundTrack ? 2U : 1U);
    QCOMPARE(reading.packets[0], kPictures - 1);
    QVERIFY(std::abs(reading.durationSec() - expectedSec) < 2 * kStepSec);
    QCOMPARE(reading.codec(0).codec_tag,
             isHevc ? MKTAG('h', 'v', 'c', '1') : MKTAG('a', 'v', 'c', '1'));
    QCOMPARE(std::make_pair(reading.codec(0).width, reading.codec(0).height),
             std::make_pair(64, 48));
    QVERIFY(reading.codec(0).extradata_size > 20 && reading.codec(0).extradata[0] == 1);
    if (!hasSoundTrack)
        return;
    QCOMPARE(reading.packets[1], static_cast<int>(sound.size()));
    QCOMPARE(reading.codec(1).sample_rate, 16000);
    QVERIFY(reading.codec(1).extradata_size >= 2);
}

void PlayerRecorderTest::recording_beginsAtKeyFrame() {
    const std::vector<EncodedPicture> clip = encodeClip({});
    Rig rig;
    rig.record();
    rig.give({clip.begin() + 1, clip.begin() + 4}, AV_CODEC_ID_H264);
    rig.recorder.stop();
    QCOMPARE(rig.seen(), std::vector<int>{KvPlayerRecorder::kEnded});
    QVERIFY(QDir(rig.dir.path()).isEmpty());
}

void PlayerRecorderTest::recording_getsNumber_whenNameIsTaken() {
    const std::vector<EncodedPicture> clip = encodeClip({});
    Rig rig;
    QFile taken(rig.dir.filePath(QStringLiteral("clip.mp4")));
    QVERIFY(taken.open(QIODevice::WriteOnly) && taken.write("precious") > 0);
    taken.close();
    QVERIFY(rig.recordFrom(clip[0], AV_CODEC_ID_H264));
    rig.recorder.stop();
    QCOMPARE(rig.recorder.path(), rig.dir.filePath(QStringLiteral("clip-2.mp4")));
    QVERIFY(QFileInfo(rig.recorder.path()).size() > 0);
    QCOMPARE(taken.size(), qint64{8});
}

void PlayerRecorderTest::recording_fails_whenItCannotGoOn_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("firstCodec");
    QTest::addColumn<int>("codec");
    QTest::addColumn<std::vector<int>>("events");
    using R = KvPlayerRecorder;
    const int h264 = AV_CODEC_ID_H264, none = AV_CODEC_ID_NONE;
    const QString clip = QStringLiteral("clip.mp4");
    QTest::newRow("no such folder")
        << QStringLiteral("missing/clip.mp4") << h264 << h264 << std::vector<int>{R::kFailed};
    QTest::newRow("not decoded") << clip << none << none << std::vector<int>{R::kFailed};
    QTest::newRow("codec changes") << clip << h264 << int(AV_CODEC_ID_HEVC)
                                   << std::vector<int>{R::kCreated, R::kFailed, R::kEnded};
}

void PlayerRecorderTest::recording_fails_whenItCannotGoOn() {
    QFETCH(const QString, name);
    QFETCH(const int, firstCodec);
    QFETCH(const int, codec);
    QFETCH(const std::vector<int>, events);
    const std::vector<EncodedPicture> clip = encodeClip({});
    Rig rig;
    rig.record(rig.dir.filePath(name));
    QVERIFY(QTest::qWaitFor([&] {
        rig.give({clip[0]}, firstCodec);
        return !rig.seen().empty();
    }));
    rig.give({clip[0]}, codec);
    QTRY_VERIFY(!rig.recorder.isRecording());
    QCOMPARE(rig.seen(), events);
    rig.recorder.stop();
    QCOMPARE(rig.seen(), events);
}

void PlayerRecorderTest::recording_fails_whenDiskIsFull() {
    const std::vector<EncodedPicture> clip =
        encodeClip({false, 320, 240, 10, 5, nullptr, AV_PIX_FMT_YUV420P, true});
    rlimit former{};
    getrlimit(RLIMIT_FSIZE, &former);
    const auto formerHandler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tiny{64 * 1024, former.rlim_max};
    Rig rig;
    setrlimit(RLIMIT_FSIZE, &tiny);
    const bool began = rig.recordFrom(clip[0], AV_CODEC_ID_H264);
    for (int i = 0; i < 20 && began; ++i)
        rig.give(clip, AV_CODEC_ID_H264);
    const bool ended = QTest::qWaitFor([&] { return !rig.recorder.isRecording(); }, 20000);
    rig.recorder.stop();
    setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, formerHandler);
    QVERIFY(ended);
    using R = KvPlayerRecorder;
    QCOMPARE(rig.seen(), (std::vector<int>{R::kCreated, R::kFailed, R::kEnded}));
}

void PlayerRecorderTest::clock_onlyRises_data() {
    using Times = std::vector<double>;
    QTest::addColumn<Times>("camera");
    QTest::addColumn<Times>("line");
    QTest::newRow("rises") << Times{50, 51, 53.5} << Times{0, 1, 3.5};
    QTest::newRow("stands still") << Times{50, 51, 51, 52} << Times{0, 1, 1, 2};
    QTest::newRow("set back") << Times{50, 50.5, 20, 20.5} << Times{0, 0.5, 1, 1.5};
    QTest::newRow("set back for good") << Times{50, 50.5, 50, 49.5} << Times{0, 0.5, 1, 1.5};
    QTest::newRow("set ahead") << Times{0, 0.5, 1.7e9, 1.7e9 + 0.5} << Times{0, 0.5, 1, 1.5};
    QTest::newRow("long silence") << Times{50, 59, 60} << Times{0, 9, 10};
}

void PlayerRecorderTest::clock_onlyRises() {
    QFETCH(const std::vector<double>, camera);
    QFETCH(const std::vector<double>, line);
    RecordingClock clock;
    clock.start(camera[0], 0.0);
    for (size_t i = 0; i < camera.size(); ++i)
        QVERIFY(std::abs(clock.place(camera[i]) - line[i]) < 1e-6);
}

}  // namespace

static const orvelle::test::RegisterSuite<PlayerRecorderTest> kRegistered;

#include "player_recorder_test.moc"
