#include "render/audio_converter.h"

#include "support/suites.h"
#include "support/tone.h"

using namespace orvelle::test;

namespace {

class AudioConverterTest : public QObject {
    Q_OBJECT

    KvAudioConverter m_converter{48000, AV_CH_LAYOUT_STEREO, 2, AV_SAMPLE_FMT_S16};

private slots:
    void tone_staysSmooth_acrossFrames() {
        for (const auto& [rate, channels] : {std::pair(8000, 1), std::pair(44100, 2)}) {
            m_converter.reset();
            std::vector<int16_t> out;
            for (int i = 0; i < 40; ++i) {
                const auto frame =
                    toneFrame(AV_SAMPLE_FMT_S16P, rate, channels, i * rate / 50, rate / 50);
                QCOMPARE(m_converter.convert(frame.get()), 0);
                int16_t chunk[512];
                while (m_converter.read(chunk, 1024) == 1024)
                    out.insert(out.end(), chunk, chunk + 512);
            }
            const int frames = static_cast<int>(out.size() / 2);
            QVERIFY(frames > 39 * 960 && frames <= 40 * 960);
            QVERIFY(toneShare(out.data() + 1920, frames - 960, 48000) > 0.99);
            for (size_t i = 1922; i + 2 < out.size(); i += 2) {
                QCOMPARE(out[i], out[i + 1]);
                // A tone of this level bends by 54 a sample; a seam between frames by hundreds.
                QVERIFY(qAbs(out[i + 2] - 2 * out[i] + out[i - 2]) < 80);
            }
        }
    }

    void longFrame_isConvertedWhole_andReadOnlyAsWanted() {
        m_converter.reset();
        QCOMPARE(m_converter.convert(toneFrame(AV_SAMPLE_FMT_S16P, 48000, 1, 0, 100'000).get()), 0);
        std::vector<uint8_t> bytes(400'001);
        QCOMPARE(m_converter.read(bytes.data(), 400'001), -1);
        QCOMPARE(m_converter.read(bytes.data(), 400'000), 400'000);
        QCOMPARE(m_converter.read(bytes.data(), -1), -1);
    }

    void oddFrame_isRefused_andTheNextGoodOneIsNot() {
        const auto convert = [this](auto bend, int channels = 1) {
            const auto frame = toneFrame(AV_SAMPLE_FMT_S16, 8000, channels, 0, 160);
            bend(*frame);
            return m_converter.convert(frame.get());
        };
        QVERIFY(convert([](AVFrame& f) { f.sample_rate = 0; }) < 0);
        QVERIFY(convert([](AVFrame& f) { f.nb_samples = -1; }) < 0);
        QVERIFY(convert([](AVFrame& f) { f.format = 9999; }) < 0);
        QVERIFY(convert([](AVFrame& f) { av_channel_layout_uninit(&f.ch_layout); }) < 0);
        for (const int channels : {6, 1})
            QCOMPARE(convert([](AVFrame&) {}, channels), 0);
    }
};

const RegisterSuite<AudioConverterTest> registered;

}  // namespace

#include "audio_converter_test.moc"
