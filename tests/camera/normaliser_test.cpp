#include <QTemporaryDir>

#include "camera/media_kit.h"
#include "camera/sources/media_source.h"
#include "camera/sources/sound_normaliser.h"
#include "camera/sources/stream_normaliser.h"
#include "link/limits.h"
#include "support/suites.h"

using namespace orvelle;

namespace {

/// A clip on its way through source and normalisers, as fast as it can be read.
struct Passage {
    explicit Passage(const QString& file, AVCodecID audio = AV_CODEC_ID_AAC)
        : source({file, false}),
          video({AV_CODEC_ID_H264, 1080, 20'000'000, false},
                [this](const EncodedFrame& frame) { out.frameReady(frame); }),
          sound(audio, [this](const EncodedFrame& frame) { out.frameReady(frame); }),
          isOpen(source.open().isEmpty() && video.open(*source.video()).isEmpty() &&
                 (!source.audio() || sound.open(*source.audio()).isEmpty())) {}

    void run(int packets, bool wanted) {
        const PacketPtr packet(av_packet_alloc());
        while (packets-- > 0 && source.read(packet.get()) == MediaSource::Result::kPacket) {
            if (packet->stream_index == source.video()->index)
                video.push(*packet, wanted, false);
            else
                sound.push(*packet, wanted);
            av_packet_unref(packet.get());
        }
    }

    MediaSource source;
    test::FrameCollector out;
    StreamNormaliser video;
    SoundNormaliser sound;
    bool isOpen;
};

constexpr char kH264[] = "-an -c:v libx264 -bf 0 -g 15";
constexpr char kBFrames[] = "-an -c:v libx264 -bf 2 -g 15 -sc_threshold 0";

}  // namespace

class NormaliserTest : public QObject {
    Q_OBJECT

private slots:
    void video_comesOutFit_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("options");
        QTest::addColumn<bool>("isEncoded");
        QTest::addColumn<int>("pictures");
        const auto row = [](const char* name, const char* file, const char* options, bool isEncoded,
                            int pictures = 45) {
            QTest::newRow(name) << QString::fromLatin1(file) << QString::fromLatin1(options)
                                << isEncoded << pictures;
        };
        row("h264 mp4", "v.mp4", kH264, false);
        row("h264 mpegts", "v.ts", kH264, false);
        row("h264 elementary", "v.h264", kH264, false);
        row("hevc mkv", "v.mkv", "-an -c:v libx265 -x265-params bframes=0:log-level=none", false);
        row("h264 B frames", "b.mp4", kBFrames, true);
        // Noise that must stay within the limit at 20 Mbit/s as well.
        row("h264 huge frames", "huge.mp4",
            "-an -vf scale=1920:1080,noise=alls=100:allf=t -c:v libx264 -preset ultrafast -qp 0 "
            "-bf "
            "0 -frames 6",
            true, 6);
        row("mpeg4", "v.mp4", "-an -c:v mpeg4 -q:v 2", true);
        row("mjpeg", "v.mkv", "-an -c:v mjpeg -q:v 2", true);
    }

    void video_comesOutFit() {
        QFETCH(QString, file);
        QFETCH(QString, options);
        QFETCH(bool, isEncoded);
        QFETCH(int, pictures);
        QVERIFY(test::makeClip(m_directory.filePath(file), options));
        Passage passage(m_directory.filePath(file));
        QVERIFY(passage.isOpen);
        passage.run(1000, true);
        QCOMPARE(passage.video.isEncoding(), isEncoded);
        const auto frames = passage.out.frames(Medium::kVideo);
        QCOMPARE(test::faultOf(frames), std::string());
        const auto decoded = test::decode(frames);
        QCOMPARE(decoded.size(), frames.size());
        // What waits inside the source's decoder at the end does not come.
        QVERIFY2(int(decoded.size()) >= pictures - 4, qPrintable(QString::number(decoded.size())));
        for (size_t i = 0; i < decoded.size() && pictures == 45; ++i)
            QCOMPARE(test::clipIndexOf(*decoded[i]), int(i));
    }

    void encoding_waitsForViewers_andStartsWithinTheGroup() {
        const QString file = m_directory.filePath(QStringLiteral("waiting.mp4"));
        QVERIFY(test::makeClip(file, QLatin1String(kBFrames)));
        Passage passage(file);
        QVERIFY(passage.isOpen);
        passage.run(24, false);
        QCOMPARE(passage.out.count(Medium::kVideo), size_t{0});
        passage.run(2, true);  // some ten pictures behind the key frame at 15
        const auto frames = passage.out.frames(Medium::kVideo);
        QCOMPARE(test::faultOf(frames), std::string());
        const int index = test::clipIndexOf(*test::decode(frames).at(0));
        QVERIFY2(index > 18 && index < 27, qPrintable(QString::number(index)));
    }

    void sound_comesOutFit_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("options");
        QTest::addColumn<int>("wanted");
        QTest::addColumn<bool>("isEncoded");
        const auto row = [](const char* name, const char* file, const char* options,
                            AVCodecID wanted, bool isEncoded) {
            QTest::newRow(name) << QString::fromLatin1(file)
                                << QStringLiteral("-c:v copy ") + QLatin1String(options)
                                << int(wanted) << isEncoded;
        };
        row("aac mp4", "a.mp4", "-c:a aac -ar 48000 -ac 2", AV_CODEC_ID_AAC, false);
        row("aac huge frames", "huge.mp4",
            "-c:a aac -ac 6 -ar 48000 -b:a 1536k -af "
            "aeval=random(0)|random(1)|random(2)|random(3)|random(4)|random(5):c=5.1",
            AV_CODEC_ID_AAC, true);
        row("aac to alaw", "a.mp4", "-c:a aac", AV_CODEC_ID_PCM_ALAW, true);
        row("pcm", "a.mkv", "-c:a pcm_s16le -ar 44100 -ac 2", AV_CODEC_ID_AAC, true);
        row("mp2 mpegts", "mp2.ts", "-c:a mp2 -ar 48000", AV_CODEC_ID_PCM_ALAW, true);
    }

    void sound_comesOutFit() {
        QFETCH(QString, file);
        QFETCH(QString, options);
        QFETCH(int, wanted);
        QFETCH(bool, isEncoded);
        QVERIFY(test::makeClip(m_directory.filePath(file), options));
        Passage passage(m_directory.filePath(file), AVCodecID(wanted));
        QVERIFY(passage.isOpen);
        passage.run(5000, true);
        QCOMPARE(passage.sound.isEncoding(), isEncoded);
        const auto frames = passage.out.frames(Medium::kAudio);
        for (const EncodedFrame& frame : frames) {
            QVERIFY(frame.bytes->size() <= size_t{kMaxAudioFrameBytes});
            QCOMPARE(int(frame.codecId), wanted == AV_CODEC_ID_AAC ? 0x87 : 0x89);
        }
        double seconds = 0.0;
        for (const FramePtr& block : test::decode(frames))
            seconds += double(block->nb_samples) / block->sample_rate;
        QVERIFY2(seconds > 2.6 && seconds < 3.3, qPrintable(QString::number(seconds)));
    }

private:
    QTemporaryDir m_directory;
};

static const test::RegisterSuite<NormaliserTest> s_normaliserTest;

#include "normaliser_test.moc"
