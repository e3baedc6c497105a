#include "icons/gif_writer.h"

#include <QColor>
#include <QFile>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "frames/ffmpeg_io_ptr.h"

namespace orvelle::icons {
namespace {

constexpr int kClear = 255;         // palette entry; the others are grey levels
constexpr int kLeastAlpha = 64;     // of a pixel that is drawn at all
constexpr int kTicksASecond = 100;  // GIF's own clock

uint8_t paletteIndex(QRgb pixel, int matte) {
    const int alpha = qAlpha(pixel);
    if (alpha < kLeastAlpha)
        return kClear;
    const int grey = (qGray(pixel) * alpha + matte * (255 - alpha)) / 255;
    return static_cast<uint8_t>(qMin(grey, kClear - 1));
}

FramePtr makeFrame(const QImage& image, int matte) {
    FramePtr frame(av_frame_alloc());
    if (!frame)
        return nullptr;
    frame->format = AV_PIX_FMT_PAL8;
    frame->width = image.width();
    frame->height = image.height();
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        return nullptr;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            frame->data[0][y * frame->linesize[0] + x] = paletteIndex(image.pixel(x, y), matte);
    for (uint32_t grey = 0; grey <= kClear; ++grey) {
        const uint32_t entry = grey == kClear ? 0 : 0xFF000000U | grey * 0x010101U;
        std::memcpy(frame->data[1] + 4 * grey, &entry, sizeof entry);
    }
    return frame;
}

CodecContextPtr openEncoder(QSize size) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_GIF);
    CodecContextPtr encoder(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!encoder)
        return nullptr;
    encoder->width = size.width();
    encoder->height = size.height();
    encoder->pix_fmt = AV_PIX_FMT_PAL8;
    encoder->time_base = AVRational{1, kTicksASecond};
    return avcodec_open2(encoder.get(), codec, nullptr) < 0 ? nullptr : std::move(encoder);
}

OutputFormatPtr openFile(const QString& path, const AVCodecContext& encoder) {
    AVFormatContext* raw = nullptr;
    const QByteArray name = QFile::encodeName(path);
    if (avformat_alloc_output_context2(&raw, nullptr, "gif", name.constData()) < 0)
        return nullptr;
    OutputFormatPtr file(raw);
    AVStream* stream = avformat_new_stream(raw, nullptr);
    if (!stream || avcodec_parameters_from_context(stream->codecpar, &encoder) < 0)
        return nullptr;
    stream->time_base = encoder.time_base;
    if (avio_open(&raw->pb, name.constData(), AVIO_FLAG_WRITE) < 0)
        return nullptr;
    return avformat_write_header(raw, nullptr) < 0 ? nullptr : std::move(file);
}

bool encode(AVCodecContext* encoder, AVFormatContext* file, const AVFrame* frame, int ticks) {
    if (avcodec_send_frame(encoder, frame) < 0)
        return false;
    const PacketPtr packet(av_packet_alloc());
    while (packet && avcodec_receive_packet(encoder, packet.get()) >= 0) {
        packet->duration = ticks;
        av_packet_rescale_ts(packet.get(), encoder->time_base, file->streams[0]->time_base);
        if (av_interleaved_write_frame(file, packet.get()) < 0)
            return false;
    }
    return packet != nullptr;
}

bool writeAll(const QString& path, const std::vector<QImage>& images, int ticks, int matte) {
    const CodecContextPtr encoder = openEncoder(images.front().size());
    const OutputFormatPtr file = encoder ? openFile(path, *encoder) : nullptr;
    if (!file)
        return false;
    int64_t time = 0;
    for (const QImage& image : images) {
        const FramePtr frame = makeFrame(image, matte);
        if (!frame)
            return false;
        frame->pts = time;
        time += ticks;
        if (!encode(encoder.get(), file.get(), frame.get(), ticks))
            return false;
    }
    return encode(encoder.get(), file.get(), nullptr, ticks) && av_write_trailer(file.get()) >= 0;
}

}  // namespace

bool writeGreyGif(const QString& path, const std::vector<QImage>& frames, int frameMs,
                  const QColor& matte) {
    const int ticks = frameMs * kTicksASecond / 1000;
    if (!frames.empty() && writeAll(path, frames, ticks, qGray(matte.rgb())))
        return true;
    std::fprintf(stderr, "%s: cannot be written\n", qPrintable(path));
    return false;
}

}  // namespace orvelle::icons
