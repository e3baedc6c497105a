#include <algorithm>
#include <cmath>
#include <random>

#include "camera/demo/demo_scene.h"
#include "camera/demo/demo_tone.h"
#include "camera/encoding/audio_encoder.h"
#include "camera/encoding/painter.h"
#include "camera/encoding/video_encoder.h"
#include "camera/media_kit.h"
#include "link/limits.h"
#include "support/suites.h"

using namespace orvelle;

class EncodersTest : public QObject {
    Q_OBJECT

private slots:
    void h264_hasNoDelayAndKeysOnTimeAndRequest() { encodeVideo(AV_CODEC_ID_H264); }
    void hevc_hasNoDelayAndKeysOnTimeAndRequest() { encodeVideo(AV_CODEC_ID_HEVC); }

    void noise_isEncodedAtALowerRate_data() {
        QTest::addColumn<int>("codec");
        QTest::newRow("h264") << int(AV_CODEC_ID_H264);
        QTest::newRow("hevc") << int(AV_CODEC_ID_HEVC);
    }

    void noise_isEncodedAtALowerRate() {
        QFETCH(int, codec);
        VideoEncoder encoder;
        QCOMPARE(encoder.open(AVCodecID(codec), {1920, 1080, 15, 50'000'000}), QString());
        const FramePtr picture = makePicture(1920, 1080);
        std::minstd_rand random(1);
        std::optional<EncodedFrame> frame;
        for (int i = 0; i < 12 && !frame; ++i) {
            std::generate_n(picture->data[0], picture->linesize[0] * 1080, random);
            frame = encoder.encode(picture.get(), i * 66'667, false);
        }
        QVERIFY(frame && frame->isKey);
        QVERIFY(encoder.format().bitsPerSecond < 50'000'000);
    }

    void aac_keepsPitchAndTimes() { encodeSound(AV_CODEC_ID_AAC, 16'000); }
    void alaw_keepsPitchAndTimes() { encodeSound(AV_CODEC_ID_PCM_ALAW, 8'000); }

private:
    static void encodeVideo(AVCodecID codec) {
        VideoEncoder encoder;
        QCOMPARE(encoder.open(codec, {320, 180, 15, 500'000}), QString());
        const DemoScene scene(320, 180, 0, "UID");
        const FramePtr picture = makePicture(320, 180);
        std::vector<EncodedFrame> frames;
        for (int i = 0; i < 50; ++i) {
            SceneTime time;
            time.sceneUs = i * 66'667;
            time.stamp = uint64_t(i);
            scene.draw(picture.get(), time, {});
            const auto frame = encoder.encode(picture.get(), time.sceneUs, i == 40);
            QVERIFY(frame);  // one for each picture, at once
            QCOMPARE(frame->timeUs, time.sceneUs);
            QCOMPARE(frame->isKey, i == 0 || i == 30 || i == 40);
            frames.push_back(*frame);
        }
        QCOMPARE(test::faultOf(frames), std::string());
        const std::vector<EncodedFrame> late(frames.begin() + 40, frames.end());
        for (const auto& stream : {frames, late}) {
            const std::vector<FramePtr> pictures = test::decode(stream);
            QCOMPARE(pictures.size(), stream.size());
            for (size_t i = 0; i < pictures.size(); ++i)
                QCOMPARE(test::clockOf(*pictures[i]).value_or(99), 50 - stream.size() + i);
        }
    }

    static void encodeSound(AVCodecID codec, int rate) {
        AudioEncoder encoder;
        QCOMPARE(encoder.open(codec), QString());
        QCOMPARE(encoder.sampleRate(), rate);
        DemoTone tone(rate);
        test::FrameCollector out;
        std::vector<float> samples(size_t(rate) / 50 + 3);  // fills no frame evenly
        for (int64_t first = 0; first < 2 * rate; first += int64_t(samples.size())) {
            tone.fill(samples);
            const bool isTimed = first % 2 == 0;
            encoder.encode(samples.data(), int(samples.size()),
                           isTimed ? first * 1'000'000 / rate : AV_NOPTS_VALUE,
                           [&out](const EncodedFrame& frame) { out.frameReady(frame); });
        }
        const auto frames = out.frames(Medium::kAudio);
        QVERIFY(frames.size() > 25);
        const int64_t stepUs = int64_t{encoder.samplesPerFrame()} * 1'000'000 / rate;
        for (size_t i = 1; i < frames.size(); ++i) {
            QVERIFY(frames[i].bytes->size() <= size_t{kMaxAudioFrameBytes});
            QCOMPARE(frames[i].timeUs - frames[i - 1].timeUs, stepUs);
        }
        int rises = 0, count = 0;
        float last = 0;
        for (const FramePtr& block : test::decode(frames)) {
            QCOMPARE(block->sample_rate, rate);
            for (int i = 0; i < block->nb_samples; ++i, ++count) {
                const float sample = block->format == AV_SAMPLE_FMT_FLTP
                                         ? reinterpret_cast<const float*>(block->data[0])[i]
                                         : reinterpret_cast<const int16_t*>(block->data[0])[i];
                rises += last < 0 && sample >= 0;
                last = sample;
            }
        }
        const double hertz = double(rises) * rate / count;
        QVERIFY2(std::abs(hertz - 440.0) < 15.0, qPrintable(QString::number(hertz)));
    }
};

static const test::RegisterSuite<EncodersTest> s_encodersTest;

#include "encoders_test.moc"
