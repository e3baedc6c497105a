#include "frames/picture_clock.h"

#include "frames/ffmpeg_io_ptr.h"
#include "frames/input_packet.h"
#include "support/encoded_clip.h"
#include "support/suites.h"

using namespace orvelle;
using namespace orvelle::test;

namespace {

constexpr uint64_t kValue = 0x0123456789ABULL;

/// Noise that no low bit rate survives, with the clock on top.
void drawScene(AVFrame& frame, int number) {
    for (unsigned i = 0; i < static_cast<unsigned>(frame.linesize[0]) * 360; ++i)
        frame.data[0][i] = static_cast<uint8_t>(i * 7 ^ i * i / 640);
    memset(frame.data[1], 200, static_cast<size_t>(frame.linesize[1] * 180));
    memset(frame.data[2], 60, static_cast<size_t>(frame.linesize[2] * 180));
    drawPictureClock(frame.data[0], frame.linesize[0], 640, 360, kValue + unsigned(number));
}

class PictureClockTest : public QObject {
    Q_OBJECT

private slots:
    void value_comesBack_fromLowQualityVideoScaledToRgb() {
        const auto clip =
            encodeClip({false, 640, 360, 8, 5, nullptr, AV_PIX_FMT_YUV420P, "45"}, drawScene);
        QCOMPARE(clip.size(), size_t{8});
        CodecContextPtr decoder(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_H264)));
        decoder->thread_count = 1;
        QCOMPARE(avcodec_open2(decoder.get(), nullptr, nullptr), 0);
        const FramePtr picture(av_frame_alloc());
        const ScalerPtr scaler(sws_getContext(640, 360, AV_PIX_FMT_YUV420P, 317, 181,
                                              AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr,
                                              nullptr));
        std::vector<uint8_t> rgb(320 * 4 * 181);
        uint8_t* const planes[] = {rgb.data()};
        const int strides[] = {320 * 4};
        for (size_t i = 0; i < clip.size(); ++i) {
            const auto packet = KvBasePlayerInputPacket::copyOf(
                clip[i].bytes.data(), int(clip[i].bytes.size()), clip[i].isKey, 0, 0, 0.0);
            QCOMPARE(avcodec_send_packet(decoder.get(), packet->packet()), 0);
            QCOMPARE(avcodec_receive_frame(decoder.get(), picture.get()), 0);
            sws_scale(scaler.get(), picture->data, picture->linesize, 0, 360, planes, strides);
            QCOMPARE(readPictureClock({rgb.data(), 317, 181, strides[0], 4}), kValue + i);
        }
    }

    void value_isRefused_whenOneCellIsWrong() {
        std::vector<uint8_t> luma(64 * 40);
        QVERIFY(drawPictureClock(luma.data(), 64, 64, 40, uint64_t{5} << 48 | kValue));
        const PixelView view{luma.data(), 64, 40, 64};
        QCOMPARE(readPictureClock(view), kValue);
        for (size_t cell = 0; cell < 64; ++cell) {
            std::vector<uint8_t> bent = luma;
            for (const size_t corner : {0, 1, 64, 65})
                bent[cell / 32 * 128 + cell % 32 * 2 + corner] ^= 0xFF;
            QVERIFY(!readPictureClock({bent.data(), 64, 40, 64}));
        }
        QVERIFY(!readPictureClock({luma.data(), 64, 39, 64}));
    }
};

const orvelle::test::RegisterSuite<PictureClockTest> registered;

}  // namespace

#include "picture_clock_test.moc"
