#include "media/player/player_decoder.h"

#include <QtTest>

#include <algorithm>
#include <cmath>

#include "frames/picture_role.h"
#include "memory_input.h"
#include "support/suites.h"

using namespace orvelle::test;

Q_DECLARE_METATYPE(std::vector<orvelle::test::EncodedPicture>)

namespace {

using Frame = std::unique_ptr<KvBasePlayerDecoderFrame>;
using Clip = std::vector<EncodedPicture>;

constexpr int kH264 = AV_CODEC_ID_H264;

/// A decoder on an input in memory; pictures are a second apart unless said otherwise.
struct Rig {
    MemoryInput input;
    KvPlayerDecoder decoder;
    const KvThread reader{QStringLiteral("reader")};
    int given = 0;
    double secPerPicture = 1.0;

    Rig() {
        decoder.setInput(&input);
        decoder.start();
    }
    void give(const EncodedPicture& picture, bool followsLoss) {
        input.giveVideo(picture, kH264, given++ * secPerPicture, followsLoss);
    }
    void give(const Clip& clip, int codec = kH264) {
        for (const EncodedPicture& picture : clip)
            input.giveVideo(picture, codec, given++ * secPerPicture);
    }
    /// Null when the decoder has ended.
    Frame next() { return nextWithin(20000); }
    Frame nextWithin(int ms) {
        KvBasePlayerDecoderFrame* frame = nullptr;
        decoder.waitForVideoFrame(reader, ms);
        decoder.readVideoFrame(&frame);
        return Frame(frame);
    }
    /// All that is left, pictures before sound; ends the stream.
    std::vector<Frame> rest() {
        std::vector<Frame> frames;
        input.end();
        while (Frame frame = next())
            frames.push_back(std::move(frame));
        for (KvBasePlayerDecoderFrame* frame; decoder.readAudioFrame(&frame) == 0;)
            frames.emplace_back(frame);
        return frames;
    }
};

/// A pattern that moves, so that a picture on the wrong ground shows.
void drawMoving(AVFrame& picture, int index) {
    for (int i = 0; i < picture.linesize[0] * picture.height; ++i)
        picture.data[0][i] = static_cast<uint8_t>((i * i / 97 + 13 * index) % 199);
}

/// The largest difference of two pictures' brightness.
int difference(const AVFrame& one, const AVFrame& other) {
    int largest = 0;
    for (int y = 0; y < one.height; ++y)
        for (int x = 0; x < one.width; ++x)
            largest = std::max(largest, std::abs(one.data[0][y * one.linesize[0] + x] -
                                                 other.data[0][y * other.linesize[0] + x]));
    return largest;
}

/// Whether a picture is the one of this index in a clip of ten.
bool isPicture(const Frame& frame, int index, bool isFullRange = false) {
    const int luma = 40 + 16 * index;
    const int expected = isFullRange ? 16 + luma * 219 / 255 : luma;
    return std::abs(frame->frame()->data[0][0] - expected) <= 3;
}

class PlayerDecoderTest : public QObject {
    Q_OBJECT
private slots:
    void keyPictures_areAll_whileNobodyWatches() {
        const Clip clip = encodeClip({});
        Rig rig;
        rig.decoder.setKeyPicturesOnly(true);
        rig.give(clip);
        std::vector<double> times;
        while (!rig.input.isVideoDone() || rig.decoder.waitForVideoFrame(rig.reader, 0))
            if (const Frame picture = rig.nextWithin(10))
                times.push_back(picture->time());
        QVERIFY(times.size() > 1 && times.size() < clip.size());
        for (const double time : times)
            QVERIFY(clip[static_cast<size_t>(time)].isKey);
        // What builds on pictures that were left out is left out, too.
        rig.decoder.setKeyPicturesOnly(false);
        QVERIFY(!clip.back().isKey);
        rig.give({clip.back()});
        rig.give(clip);
        const auto next = static_cast<double>(clip.size() + 1);
        QCOMPARE(rig.next()->time(), next);
        QCOMPARE(rig.next()->time(), next + 1);
    }

    void pictures_leaveInPlanar420() {
        struct Row {
            const char* encoder;
            int codec;
            AVPixelFormat pixelFormat;
            int width, height;
        };
        for (const Row& row : {Row{"libx264", kH264, AV_PIX_FMT_YUV422P, 64, 48},
                               Row{"libx264", kH264, AV_PIX_FMT_YUVJ420P, 64, 48},
                               Row{"libx265", AV_CODEC_ID_HEVC, AV_PIX_FMT_YUV420P, 64, 48},
                               Row{"mjpeg", AV_CODEC_ID_MJPEG, AV_PIX_FMT_YUVJ422P, 64, 48},
                               Row{"mpeg4", AV_CODEC_ID_MPEG4, AV_PIX_FMT_YUV420P, 65, 49}}) {
            Rig rig;
            rig.give(
                encodeClip({false, row.width, row.height, 10, 5, row.encoder, row.pixelFormat}),
                row.codec);
            for (int i = 0; i < 10; ++i) {
                const Frame picture = rig.next();
                const AVFrame& frame = *picture->frame();
                QVERIFY2(frame.format == AV_PIX_FMT_YUV420P && picture->time() == i, row.encoder);
                QVERIFY2(frame.width == row.width && frame.height == row.height, row.encoder);
                const bool isFullRange = row.pixelFormat == AV_PIX_FMT_YUVJ420P ||
                                         row.pixelFormat == AV_PIX_FMT_YUVJ422P;
                QVERIFY2(isPicture(picture, i, isFullRange), row.encoder);
            }
        }
    }

    void pictures_beginAtKeyFrame() {
        const Clip clip = encodeClip({});
        Rig rig;
        rig.give({clip.begin() + 3, clip.begin() + 7});
        QCOMPARE(rig.next()->time(), 2.0);
        QCOMPARE(rig.next()->time(), 3.0);
        rig.decoder.flush();
        rig.give({clip.begin() + 7, clip.end()});
        rig.give({clip[0]});
        QCOMPARE(rig.next()->time(), 7.0);
    }

    void pictures_returnAtKeyFrame_whenStreamBreaks_data() {
        QTest::addColumn<Clip>("broken");
        QTest::addColumn<int>("codec");
        const auto row = [](const char* name, const Clip& broken, int codec = kH264) {
            QTest::newRow(name) << broken << codec;
        };
        const auto flipped = [](const EncodedPicture& key, size_t bytes) {
            Clip clip;
            for (size_t bit = 32; bit < 8 * bytes; ++bit) {
                clip.push_back(key);
                clip.back().bytes[bit / 8] ^= static_cast<uint8_t>(1U << bit % 8);
            }
            return clip;
        };
        const Clip good = encodeClip({});
        Clip random;
        for (int value = 0; value < 256; ++value) {
            random.push_back(good[0]);
            std::fill(random.back().bytes.begin() + 5, random.back().bytes.end(), value);
        }
        row("empty packet", {{{}, true}});
        row("nonsense in units", random);
        row("parameter sets flipped", flipped(good[0], 48));
        row("parameter sets flipped into a delay", {flipped(good[0], 48)[64]});
        row("HEVC sets flipped", flipped(encodeClip({true})[0], 100), AV_CODEC_ID_HEVC);
        row("other size", encodeClip({false, 128, 96}));
        row("codec that is none", good, AV_CODEC_ID_NONE);
        row("codec that nobody knows", good, 0x7FFFFFFF);
        row("codec of sound", good, AV_CODEC_ID_PCM_ALAW);
        row("other codec than said", good, AV_CODEC_ID_HEVC);
    }

    void pictures_returnAtKeyFrame_whenStreamBreaks() {
        QFETCH(const Clip, broken);
        QFETCH(const int, codec);
        const Clip clip = encodeClip({});
        Rig rig;
        rig.give(clip);
        rig.give(broken, codec);
        rig.give(clip);
        const std::vector<Frame> pictures = rig.rest();
        QVERIFY(pictures.size() >= 20);
        for (int i = 1; i <= 10; ++i) {
            const Frame& picture = pictures[pictures.size() - static_cast<size_t>(i)];
            QCOMPARE(picture->time(), double(rig.given - i));
            QVERIFY(isPicture(picture, 10 - i));
        }
    }

    void pictures_areNotSmeared_whenPictureIsCut() {
        Clip clip = encodeClip({false, 160, 120, 12, 6}, drawMoving);
        clip[2].bytes.resize(clip[2].bytes.size() / 2);
        Rig rig;
        rig.secPerPicture = 0.5;
        rig.give(clip);
        std::vector<double> times;
        for (const Frame& picture : rig.rest())
            times.push_back(picture->time());
        QCOMPARE(times, (std::vector<double>{0, 0.5, 3, 3.5, 4, 4.5, 5, 5.5}));
    }

    void picture_goesAlone_whenNothingRefersToIt() {
        ClipFormat format{false, 160, 120, 12, 12};
        format.disposable = 1;
        Clip clip = encodeClip(format, drawMoving);
        QCOMPARE(clip.size(), size_t{12});
        const auto isDisposable = [](const EncodedPicture& picture) {
            return orvelle::pictureRole(AV_CODEC_ID_H264, picture.bytes.data(),
                                        picture.bytes.size(),
                                        picture.isKey) == orvelle::PictureRole::kDisposable;
        };
        const auto first = std::find_if(clip.begin(), clip.end(), isDisposable);
        QVERIFY(first != clip.end());
        first->bytes.resize(first->bytes.size() / 2);
        Rig rig;
        rig.give(clip);
        // The decoder holds the last one back; nobody tells it that the stream has ended.
        QCOMPARE(rig.rest().size(), size_t{10});
    }

    void pictures_areWholeAgainAfterThreeSeconds_withoutKeyFrames() {
        ClipFormat format{false, 160, 120, 90, 20};
        format.isRefreshed = true;
        Clip clip = encodeClip(format, drawMoving);
        QCOMPARE(clip.size(), size_t{90});
        Rig whole;
        whole.give(clip);
        const std::vector<Frame> expected = whole.rest();
        QCOMPARE(expected.size(), size_t{90});
        // Pictures 13 and 14 are lost, whether or not the starts of refreshes count as keys.
        for (const bool areRefreshesKeys : {true, false}) {
            Rig rig;
            rig.secPerPicture = 0.1;
            for (int i = 0; i < 90; ++i) {
                EncodedPicture picture = clip[static_cast<size_t>(i)];
                picture.isKey = picture.isKey && (areRefreshesKeys || i == 0);
                if (i == 13)
                    rig.given += 2;
                if (i != 13 && i != 14)
                    rig.give(picture, i == 15);
            }
            const std::vector<Frame> pictures = rig.rest();
            QCOMPARE(pictures.size(), size_t{13 + 90 - 45});
            QCOMPARE(qRound(10 * pictures[13]->time()), 45);
            for (size_t i = 0; i < pictures.size(); ++i)
                QVERIFY(difference(*pictures[i]->frame(),
                                   *expected[i < 13 ? i : i + 32]->frame()) <= 2);
        }
    }

    void pictures_waitAtMostThree() {
        Rig rig;
        rig.give(encodeClip({}));
        QTRY_COMPARE(rig.input.videoWaiting(), 7);
        QVERIFY(rig.next());
        QTRY_COMPARE(rig.input.videoWaiting(), 6);
    }

    void sound_isDecoded_whenParametersAreUnsaid() {
        struct Row {
            int codec;
            size_t bytes;         // of each of three packets
            int samples, frames;  // in each packet, in all
        };
        // IMA has several frames a packet; the first G.726 packet only shows how long one lasts.
        for (const Row& row :
             {Row{AV_CODEC_ID_PCM_ALAW, 160, 160, 3}, Row{AV_CODEC_ID_PCM_S8, 320, 320, 3},
              Row{AV_CODEC_ID_ADPCM_IMA_QT, 5 * 34, 320, 15},
              Row{AV_CODEC_ID_ADPCM_G726, 80, 320, 2}, Row{AV_CODEC_ID_ADPCM_G726, 80, 160, 2},
              Row{AV_CODEC_ID_NONE, 160, 160, 0}, Row{AV_CODEC_ID_PCM_ALAW, 0, 160, 0}}) {
            Rig rig;
            for (int i = 0; i < 3; ++i)
                rig.input.giveSound(std::vector<uint8_t>(row.bytes, 0x42), row.codec,
                                    i * row.samples / 8000.0);
            const std::vector<Frame> sound = rig.rest();
            QCOMPARE(static_cast<int>(sound.size()), row.frames);
            int at = row.codec == AV_CODEC_ID_ADPCM_G726 ? row.samples : 0;
            for (const Frame& frame : sound) {
                QCOMPARE(frame->frame()->sample_rate, 8000);
                QVERIFY(std::abs(frame->time() - at / 8000.0) < 1e-9);
                at += frame->frame()->nb_samples;
            }
            QCOMPARE(at, row.frames == 0 ? 0 : 3 * row.samples);
        }
    }

    void sound_isBounded_whenNobodyReads() {
        Rig rig;
        for (int i = 0; i < 100; ++i)  // of 20 ms; half a second may wait
            rig.input.giveSound(std::vector<uint8_t>(160, 0x42), AV_CODEC_ID_PCM_ALAW, i);
        const std::vector<Frame> sound = rig.rest();
        QVERIFY(sound.size() >= 7 && sound.size() <= 25);
        QCOMPARE(sound.back()->time(), 99.0);
        QCOMPARE(rig.decoder.stats().audioFramesDropped.load(), uint64_t{100} - sound.size());
    }

    void recording_losesNoSound_andShowsWhatWasAskedFor() {
        Rig rig;
        rig.decoder.stop();
        rig.input.beRecording();
        rig.decoder.setSoundWanted(false);  // it may be wanted again before what is read ahead ends
        QCOMPARE(rig.decoder.start(), 0);
        rig.given = -4;
        rig.give(encodeClip({}));
        for (int i = -50; i < 100; ++i)
            rig.input.giveSound(std::vector<uint8_t>(160, 0x42), AV_CODEC_ID_PCM_ALAW, i * 0.02);
        rig.input.end();
        for (int i = 0; i < 6; ++i) {
            const Frame picture = rig.next();
            QVERIFY(picture && picture->time() == i && isPicture(picture, i + 4));
        }
        // Nobody has taken sound so far, which the end does not cost either.
        for (int i = 0; i < 100; ++i) {
            KvBasePlayerDecoderFrame* sound = nullptr;
            QVERIFY(rig.decoder.waitForAudioFrame(rig.reader, 20'000));
            QCOMPARE(rig.decoder.readAudioFrame(&sound), 0);
            QCOMPARE(Frame(sound)->time(), i * 0.02);
        }
        QVERIFY(!rig.decoder.waitForAudioFrame(rig.reader, 20'000));
    }

    void sound_isSpared_whenNobodyListens() {
        Rig rig;
        rig.decoder.setSoundWanted(false);
        for (const bool isCodecOpen : {true, false, true}) {  // the first packet tells the format
            rig.input.giveSound(std::vector<uint8_t>(160, 0x42), AV_CODEC_ID_PCM_ALAW, 0.0);
            QTRY_VERIFY(rig.decoder.audioParameters());
            QTRY_COMPARE(rig.decoder.audioCodecContext() != nullptr, isCodecOpen);
            rig.decoder.setSoundWanted(!isCodecOpen);
        }
    }
};

}  // namespace

static const orvelle::test::RegisterSuite<PlayerDecoderTest> kRegistered;

#include "player_decoder_test.moc"
