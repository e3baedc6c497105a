#include "frames/picture_clock.h"

#include "frames/ffmpeg_io_ptr.h"
#include "support/suites.h"

using namespace orvelle;

namespace {

constexpr uint64_t kValue = 0x0123456789ABULL;

FramePtr makeFrame(AVPixelFormat format, int width, int height) {
    FramePtr frame(av_frame_alloc());
    frame->format = format;
    frame->width = width;
    frame->height = height;
    return av_frame_get_buffer(frame.get(), 0) < 0 ? nullptr : std::move(frame);
}

/// Noise that no low bit rate survives, with the clock on top.
FramePtr scene(int number, uint64_t value) {
    FramePtr frame = makeFrame(AV_PIX_FMT_YUV420P, 640, 360);
    for (unsigned i = 0; i < static_cast<unsigned>(frame->linesize[0]) * 360; ++i)
        frame->data[0][i] = static_cast<uint8_t>(i * 7 ^ i * i / 640);
    memset(frame->data[1], 200, static_cast<size_t>(frame->linesize[1] * 180));
    memset(frame->data[2], 60, static_cast<size_t>(frame->linesize[2] * 180));
    drawPictureClock(frame->data[0], frame->linesize[0], 640, 360, value);
    frame->pts = number;
    return frame;
}

class PictureClockTest : public QObject {
    Q_OBJECT

private slots:
    void value_comesBack_fromLowQualityVideoScaledToRgb() {
        CodecContextPtr encoder(avcodec_alloc_context3(avcodec_find_encoder(AV_CODEC_ID_H264)));
        encoder->width = 640;
        encoder->height = 360;
        encoder->pix_fmt = AV_PIX_FMT_YUV420P;
        encoder->time_base = {1, 15};
        AVDictionary* options = nullptr;
        av_dict_parse_string(&options, "preset=ultrafast:tune=zerolatency:crf=45", "=", ":", 0);
        QCOMPARE(avcodec_open2(encoder.get(), nullptr, &options), 0);
        av_dict_free(&options);
        CodecContextPtr decoder(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_H264)));
        decoder->thread_count = 1;
        QCOMPARE(avcodec_open2(decoder.get(), nullptr, nullptr), 0);

        const PacketPtr packet(av_packet_alloc());
        const FramePtr picture(av_frame_alloc());
        const FramePtr rgb = makeFrame(AV_PIX_FMT_BGRA, 317, 181);
        const ScalerPtr scaler(sws_getContext(640, 360, encoder->pix_fmt, 317, 181, AV_PIX_FMT_BGRA,
                                              SWS_BILINEAR, nullptr, nullptr, nullptr));
        for (int i = 0; i < 8; ++i) {
            const uint64_t value = kValue + static_cast<uint64_t>(i) * 66'667;
            QCOMPARE(avcodec_send_frame(encoder.get(), scene(i, value).get()), 0);
            QCOMPARE(avcodec_receive_packet(encoder.get(), packet.get()), 0);
            QCOMPARE(avcodec_send_packet(decoder.get(), packet.get()), 0);
            QCOMPARE(avcodec_receive_frame(decoder.get(), picture.get()), 0);
            sws_scale(scaler.get(), picture->data, picture->linesize, 0, 360, rgb->data,
                      rgb->linesize);
            QCOMPARE(readPictureClock({rgb->data[0], 317, 181, rgb->linesize[0], 4}), value);
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
