#include "render/audio_converter.h"

#include "render/tone.h"
#include "support/suites.h"

using namespace orvelle::test;

namespace {

constexpr int64_t kStereo = AV_CH_LAYOUT_STEREO;

class AudioConverterTest : public QObject {
    Q_OBJECT

private slots:
    void tone_staysSmooth_acrossFrames_data() {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("channels");
        QTest::newRow("telephone") << int(AV_SAMPLE_FMT_S16) << 8000 << 1;
        QTest::newRow("planar") << int(AV_SAMPLE_FMT_FLTP) << 16000 << 1;
        QTest::newRow("other rate") << int(AV_SAMPLE_FMT_FLTP) << 44100 << 2;
        QTest::newRow("same rate") << int(AV_SAMPLE_FMT_S16P) << 48000 << 2;
    }

    void tone_staysSmooth_acrossFrames() {
        QFETCH(int, format);
        QFETCH(int, rate);
        QFETCH(int, channels);
        constexpr int kFrames = 40;
        const int frameSamples = rate / 50;
        KvAudioConverter converter(48000, kStereo, 2, AV_SAMPLE_FMT_S16);
        std::vector<int16_t> out;
        for (int i = 0; i < kFrames; ++i) {
            const auto frame = toneFrame(static_cast<AVSampleFormat>(format), rate, channels,
                                         i * frameSamples, frameSamples);
            QCOMPARE(converter.convert(frame.get()), 0);
            int16_t chunk[512];
            while (converter.read(chunk, 1024) == 1024)
                out.insert(out.end(), chunk, chunk + 512);
        }
        const int outFrames = static_cast<int>(out.size() / 2);
        QVERIFY(qAbs(outFrames - kFrames * 960) < 960);
        QVERIFY(toneShare(out.data() + 1920, outFrames - 960, 2, 48000) > 0.99);
        for (size_t i = 1922; i + 2 < out.size(); i += 2) {
            QCOMPARE(out[i], out[i + 1]);
            // A tone of this level bends by 54 a sample; a seam between frames by hundreds.
            QVERIFY(qAbs(out[i + 2] - 2 * out[i] + out[i - 2]) < 80);
        }
    }

    void longFrame_isConvertedWhole() {
        KvAudioConverter converter(48000, kStereo, 2, AV_SAMPLE_FMT_S16);
        QCOMPARE(converter.convert(toneFrame(AV_SAMPLE_FMT_FLTP, 48000, 1, 0, 100'000).get()), 0);
        std::vector<uint8_t> bytes(100'000 * 4 + 1);
        QCOMPARE(converter.read(bytes.data(), 400'001), -1);
        QCOMPARE(converter.read(bytes.data(), 400'000), 400'000);
        QCOMPARE(converter.read(bytes.data(), -1), -1);
    }

    void oddFrame_isRefused_andTheNextGoodOneIsNot() {
        KvAudioConverter converter(48000, kStereo, 2, AV_SAMPLE_FMT_S16);
        const auto refused = [&](auto bend) {
            const auto frame = toneFrame(AV_SAMPLE_FMT_S16, 8000, 1, 0, 160);
            bend(*frame);
            return converter.convert(frame.get()) < 0;
        };
        QVERIFY(refused([](AVFrame& f) { f.sample_rate = 0; }));
        QVERIFY(refused([](AVFrame& f) { f.nb_samples = -1; }));
        QVERIFY(refused([](AVFrame& f) { f.format = -1; }));
        QVERIFY(refused([](AVFrame& f) { f.format = 9999; }));
        QVERIFY(refused([](AVFrame& f) { av_channel_layout_uninit(&f.ch_layout); }));
        QVERIFY(converter.convert(nullptr) < 0);
        for (const int channels : {6, 2, 1})
            QVERIFY(!refused([&](AVFrame& f) {
                av_frame_unref(&f);
                av_frame_move_ref(&f, toneFrame(AV_SAMPLE_FMT_S16, 8000, channels, 0, 160).get());
            }));
    }
};

const RegisterSuite<AudioConverterTest> registered;

}  // namespace

#include "audio_converter_test.moc"
