#include "media/player_decoder.h"

#include <QtTest>

#include <cmath>

#include "encoded_clip.h"
#include "media/codec_opener.h"
#include "media/parameter_sets.h"
#include "memory_input.h"
#include "support/suites.h"

using namespace orvelle;
using namespace orvelle::test;

Q_DECLARE_METATYPE(orvelle::test::ClipFormat)
Q_DECLARE_METATYPE(orvelle::test::EncodedPicture)

namespace {

using Frame = std::unique_ptr<KvBasePlayerDecoderFrame>;
using Bytes = std::vector<uint8_t>;

constexpr double kStepSec = 1.0 / 15;
constexpr int kH264 = AV_CODEC_ID_H264;

/// A decoder on an input in memory; frames are read by the test.
struct Rig {
    MemoryInput input;
    KvPlayerDecoder decoder;
    int given = 0;

    Rig() {
        decoder.setInput(&input);
        decoder.start();
    }
    void give(const EncodedPicture& picture, int codec = kH264) {
        input.giveVideo(picture, codec, given++ * kStepSec);
    }
    void give(const std::vector<EncodedPicture>& clip, int codec = kH264) {
        for (const EncodedPicture& picture : clip)
            give(picture, codec);
    }
    /// The next frame, null when the decoder has ended without one.
    Frame next(bool isVideo = true) {
        const KvThread never{QString()};
        if (isVideo)
            decoder.waitForVideoFrame(never, 20000);
        else
            decoder.waitForAudioFrame(never, 20000);
        KvBasePlayerDecoderFrame* frame = nullptr;
        isVideo ? decoder.readVideoFrame(&frame) : decoder.readAudioFrame(&frame);
        return Frame(frame);
    }
    /// All frames of the packets given; ends the stream.
    std::vector<Frame> all(bool isVideo = true) {
        input.end();
        std::vector<Frame> frames;
        while (Frame frame = next(isVideo))
            frames.push_back(std::move(frame));
        return frames;
    }
};

int lumaOf(const Frame& frame) {
    return frame->frame()->data[0][0];
}

/// The last bytes of the picture's part of an access unit replaced, cut or flipped.
Bytes withTail(Bytes bytes, size_t count, int value) {
    for (size_t i = bytes.size() - std::min(count, bytes.size()); i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(value);
    return bytes;
}

class PlayerDecoderTest : public QObject {
    Q_OBJECT
private slots:
    void pictures_leaveInPlanar420_data();
    void pictures_leaveInPlanar420();
    void pictures_beginAtKeyFrame();
    void pictures_returnAtKeyFrame_whenStreamBreaks_data();
    void pictures_returnAtKeyFrame_whenStreamBreaks();
    void pictures_areNeverSmeared_whenPictureIsCut();
    void pictures_waitAtMostThree();
    void parameters_followStream_whenSizeChanges();
    void sound_isDecoded_whenParametersAreUnsaid_data();
    void sound_isDecoded_whenParametersAreUnsaid();
    void sound_isBounded_whenNobodyReads();
    void decoder_endsAlone_whenInputEnds();
};

void PlayerDecoderTest::pictures_leaveInPlanar420_data() {
    QTest::addColumn<ClipFormat>("format");
    QTest::addColumn<int>("codec");
    QTest::addColumn<double>("range");  // of the luma, in relation to the encoded one

    const auto format = [](const char* encoder, int pixelFormat, int width = 64, int height = 48) {
        return ClipFormat{false, width, height, 10, 5, encoder, pixelFormat};
    };
    const double full = 219.0 / 255;
    QTest::newRow("H.264") << format("libx264", AV_PIX_FMT_YUV420P) << kH264 << 1.0;
    QTest::newRow("H.264 4:2:2") << format("libx264", AV_PIX_FMT_YUV422P) << kH264 << 1.0;
    QTest::newRow("H.264 4:4:4") << format("libx264", AV_PIX_FMT_YUV444P) << kH264 << 1.0;
    QTest::newRow("H.264 full range") << format("libx264", AV_PIX_FMT_YUVJ420P) << kH264 << full;
    QTest::newRow("HEVC") << format("libx265", AV_PIX_FMT_YUV420P) << int(AV_CODEC_ID_HEVC) << 1.0;
    QTest::newRow("MJPEG") << format("mjpeg", AV_PIX_FMT_YUVJ422P) << int(AV_CODEC_ID_MJPEG)
                           << full;
    QTest::newRow("MPEG-4, odd size")
        << format("mpeg4", AV_PIX_FMT_YUV420P, 65, 49) << int(AV_CODEC_ID_MPEG4) << 1.0;
}

void PlayerDecoderTest::pictures_leaveInPlanar420() {
    QFETCH(const ClipFormat, format);
    QFETCH(const int, codec);
    QFETCH(const double, range);
    Rig rig;
    rig.give(encodeClip(format), codec);
    const std::vector<Frame> frames = rig.all();
    QCOMPARE(frames.size(), size_t{10});
    for (size_t i = 0; i < frames.size(); ++i) {
        const AVFrame& picture = *frames[i]->frame();
        QCOMPARE(picture.format, int(AV_PIX_FMT_YUV420P));
        QCOMPARE(std::make_pair(picture.width, picture.height),
                 std::make_pair(format.width, format.height));
        const double luma = range == 1.0 ? 40.0 + 16 * i : 16 + (40.0 + 16 * i) * range;
        QVERIFY2(std::abs(lumaOf(frames[i]) - luma) <= 3, qPrintable(QString::number(luma)));
        QCOMPARE(frames[i]->time(), i * kStepSec);
    }
}

void PlayerDecoderTest::pictures_beginAtKeyFrame() {
    const std::vector<EncodedPicture> clip = encodeClip({});
    Rig rig;
    for (size_t i = 3; i < 7; ++i)
        rig.give(clip[i]);
    QCOMPARE(rig.next()->time(), 2 * kStepSec);
    QCOMPARE(rig.next()->time(), 3 * kStepSec);
    rig.decoder.flush();
    for (size_t i = 7; i < 10; ++i)
        rig.give(clip[i]);
    rig.give(clip[0]);
    QCOMPARE(rig.next()->time(), 7 * kStepSec);
}

void PlayerDecoderTest::pictures_returnAtKeyFrame_whenStreamBreaks_data() {
    QTest::addColumn<QVector<EncodedPicture>>("broken");
    QTest::addColumn<int>("codec");
    const EncodedPicture good = encodeClip({})[0];
    const auto key = [](Bytes bytes) { return EncodedPicture{std::move(bytes), true}; };
    const auto add = [](const char* name, const QVector<EncodedPicture>& broken,
                        int codec = kH264) { QTest::newRow(name) << broken << codec; };
    add("empty packet", {key({})});
    add("one byte", {key({0})});
    add("no start code", {key(Bytes(500, 0x55))});
    add("start codes only", {key({0, 0, 1, 0, 0, 1, 0, 0, 0, 1})});
    add("key frame cut in the middle", {key(Bytes(good.bytes.begin(), good.bytes.end() - 9))});
    add("unknown codec", {good}, AV_CODEC_ID_NONE);
    add("codec number out of range", {good}, 0x7FFFFFFF);
    add("sound codec for a picture", {good}, AV_CODEC_ID_PCM_ALAW);
    add("other codec than said", {good}, AV_CODEC_ID_HEVC);
    QVector<EncodedPicture> flipped, random;
    // Beyond the picture's own bytes stand the encoder's remarks; the sets come first.
    for (size_t bit = 32; bit < 8 * 48; ++bit) {
        flipped.append(good);
        flipped.last().bytes[bit / 8] ^= static_cast<uint8_t>(1U << bit % 8);
    }
    for (int value = 1; value < 256; value += 3)
        random.append(key(withTail(good.bytes, good.bytes.size() - 5, value)));
    add("every bit of the parameter sets flipped", flipped);
    add("random units", random);
    const EncodedPicture hevc = encodeClip({true})[0];
    flipped.clear();
    for (size_t bit = 32; bit < 8 * 100; bit += 3) {
        flipped.append(hevc);
        flipped.last().bytes[bit / 8] ^= static_cast<uint8_t>(1U << bit % 8);
    }
    add("HEVC with flipped parameter sets", flipped, AV_CODEC_ID_HEVC);
}

void PlayerDecoderTest::pictures_returnAtKeyFrame_whenStreamBreaks() {
    QFETCH(const QVector<EncodedPicture>, broken);
    QFETCH(const int, codec);
    const std::vector<EncodedPicture> clip = encodeClip({});
    Rig rig;
    rig.give(clip);
    rig.give({broken.begin(), broken.end()}, codec);
    rig.give(clip);
    const std::vector<Frame> frames = rig.all();
    QVERIFY(frames.size() >= 20);
    for (size_t i = 0; i < 10; ++i) {
        const Frame& last = frames[frames.size() - 10 + i];
        QCOMPARE(last->time(), (rig.given - 10 + static_cast<int>(i)) * kStepSec);
        QVERIFY2(std::abs(lumaOf(last) - 40 - 16 * static_cast<int>(i)) <= 3,
                 qPrintable(QString::number(i) + QLatin1Char(32) + QString::number(lumaOf(last)) +
                            QLatin1Char(32) + QString::number(last->frame()->width)));
    }
}

void PlayerDecoderTest::pictures_areNeverSmeared_whenPictureIsCut() {
    std::vector<EncodedPicture> clip =
        encodeClip({false, 160, 120, 12, 6, nullptr, AV_PIX_FMT_YUV420P, true});
    Bytes& cut = clip[2].bytes;
    cut.resize(cut.size() / 2);
    Rig rig;
    rig.give(clip);
    std::vector<double> times;
    for (const Frame& frame : rig.all())
        times.push_back(std::round(frame->time() / kStepSec));
    QString tt;
    for (double t : times)
        tt += QString::number(t) + QLatin1Char(32);
    qDebug() << "T" << tt << cut.size();
    QCOMPARE(times, (std::vector<double>{0, 1, 6, 7, 8, 9, 10, 11}));
    QCOMPARE(rig.decoder.stats().decodeErrors.load(), uint64_t{1});
}

void PlayerDecoderTest::pictures_waitAtMostThree() {
    Rig rig;
    rig.give(encodeClip({}));
    QTRY_COMPARE(rig.input.videoWaiting(), 7);
    QVERIFY(rig.next());
    QTRY_COMPARE(rig.input.videoWaiting(), 6);
    rig.decoder.stop();
    QCOMPARE(rig.input.videoWaiting(), 6);
    QVERIFY(!rig.decoder.isRunning());
    QVERIFY(!rig.decoder.videoCodecContext());
}

void PlayerDecoderTest::parameters_followStream_whenSizeChanges() {
    Rig rig;
    QVERIFY(!rig.decoder.videoParameters());
    for (const int width : {64, 128}) {
        const std::vector<EncodedPicture> clip = encodeClip({false, width, 48, 1});
        rig.give(clip);
        QCOMPARE(rig.next()->frame()->width, width);
        StreamParameters known;
        QTRY_VERIFY((known = rig.decoder.videoParameters()) && known.codec->width == width);
        QVERIFY(hasExtradata(*known.codec, parameterSets(AV_CODEC_ID_H264, clip[0].bytes.data(),
                                                         clip[0].bytes.size())));
    }
}

void PlayerDecoderTest::sound_isDecoded_whenParametersAreUnsaid_data() {
    QTest::addColumn<int>("codec");
    QTest::addColumn<int>("bytes");
    QTest::addColumn<double>("packetSec");
    QTest::addColumn<int>("frames");
    QTest::addColumn<int>("samples");
    QTest::newRow("A-law") << int(AV_CODEC_ID_PCM_ALAW) << 160 << 0.02 << 3 << 480;
    QTest::newRow("8-bit") << int(AV_CODEC_ID_PCM_S8) << 320 << 0.04 << 3 << 960;
    QTest::newRow("IMA, several frames a packet")
        << int(AV_CODEC_ID_ADPCM_IMA_QT) << 5 * 34 << 0.04 << 15 << 960;
    // The first G.726 packet only shows how long one lasts.
    QTest::newRow("G.726, 16 kbit/s") << int(AV_CODEC_ID_ADPCM_G726) << 80 << 0.04 << 2 << 640;
    QTest::newRow("G.726, 32 kbit/s") << int(AV_CODEC_ID_ADPCM_G726) << 160 << 0.04 << 2 << 640;
    QTest::newRow("G.726, no time") << int(AV_CODEC_ID_ADPCM_G726) << 80 << 0.0 << 2 << 320;
    QTest::newRow("unknown") << int(AV_CODEC_ID_NONE) << 160 << 0.02 << 0 << 0;
    QTest::newRow("empty packet") << int(AV_CODEC_ID_PCM_ALAW) << 0 << 0.02 << 0 << 0;
}

void PlayerDecoderTest::sound_isDecoded_whenParametersAreUnsaid() {
    QFETCH(const int, codec);
    QFETCH(const int, bytes);
    QFETCH(const double, packetSec);
    QFETCH(const int, frames);
    QFETCH(const int, samples);
    Rig rig;
    rig.give(encodeClip({}));
    for (int i = 0; i < 3; ++i)
        rig.input.giveSound(Bytes(static_cast<size_t>(bytes), 0x42), codec, 1.0 + i * packetSec);
    const std::vector<Frame> pictures = rig.all();
    QCOMPARE(pictures.size(), size_t{10});
    const std::vector<Frame> sound = rig.all(false);
    QCOMPARE(static_cast<int>(sound.size()), frames);
    int total = 0;
    for (const Frame& frame : sound) {
        QCOMPARE(frame->frame()->sample_rate, 8000);
        QCOMPARE(frame->frame()->ch_layout.nb_channels, 1);
        if (packetSec > 0 && codec != AV_CODEC_ID_ADPCM_G726)
            QVERIFY(std::abs(frame->time() - 1.0 - total / 8000.0) < 1e-9);
        total += frame->frame()->nb_samples;
    }
    QCOMPARE(total, samples);
}

/// A hundred packets of 20 ms: those waiting never exceed half a second, and the newest stays.
void PlayerDecoderTest::sound_isBounded_whenNobodyReads() {
    Rig rig;
    for (int i = 0; i < 100; ++i)
        rig.input.giveSound(Bytes(160, 0x42), AV_CODEC_ID_PCM_ALAW, i * 0.02);
    rig.input.end();
    QTRY_VERIFY(!rig.decoder.isRunning());
    const std::vector<Frame> sound = rig.all(false);
    QVERIFY(sound.size() >= 7 && sound.size() <= 25);
    QCOMPARE(sound.back()->time(), 99 * 0.02);
    QCOMPARE(rig.decoder.stats().audioFramesDropped.load(), uint64_t{100} - sound.size());
}

void PlayerDecoderTest::decoder_endsAlone_whenInputEnds() {
    Rig rig;
    QVERIFY(rig.decoder.isRunning());
    rig.input.end();
    QVERIFY(!rig.next());
    QVERIFY(!rig.decoder.isRunning());
    rig.decoder.stop();
    rig.decoder.stop();
}

}  // namespace

static const orvelle::test::RegisterSuite<PlayerDecoderTest> kRegistered;

#include "player_decoder_test.moc"
