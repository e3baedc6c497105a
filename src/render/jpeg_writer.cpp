#include "render/jpeg_writer.h"

#include <QSaveFile>

#include <utility>

#include "frames/ffmpeg_io_ptr.h"
#include "render/exif.h"

extern "C" {
#include <libavutil/opt.h>
}

namespace orvelle {
namespace {

// JPEG knows full range only; its viewers would show limited range too pale.
constexpr AVPixelFormat kJpegFormat = AV_PIX_FMT_YUVJ420P;
constexpr int kFirstMarkerBytes = 2;

bool isFullRangeYuv420(const AVFrame& picture) {
    return picture.format == AV_PIX_FMT_YUVJ420P ||
           (picture.format == AV_PIX_FMT_YUV420P && picture.color_range == AVCOL_RANGE_JPEG);
}

CodecContextPtr openEncoder(int width, int height) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
    CodecContextPtr encoder(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!encoder)
        return nullptr;
    encoder->width = width;
    encoder->height = height;
    encoder->pix_fmt = kJpegFormat;
    encoder->color_range = AVCOL_RANGE_JPEG;
    encoder->bit_rate = 32000;
    encoder->time_base = {1, 30};
    encoder->flags |= AV_CODEC_FLAG_QSCALE;
    encoder->global_quality = encoder->qmin * FF_QP2LAMBDA;
    encoder->mb_lmin = encoder->global_quality;
    encoder->mb_lmax = encoder->qmax * FF_QP2LAMBDA;
    if (avcodec_open2(encoder.get(), codec, nullptr) < 0)
        return nullptr;
    return encoder;
}

ScalerPtr rangeConverter(const AVFrame& picture) {
    ScalerPtr scaler(sws_alloc_context());
    if (!scaler)
        return nullptr;
    const std::pair<const char*, int> options[] = {
        {"srcw", picture.width},
        {"srch", picture.height},
        {"src_format", picture.format},
        {"src_range", picture.color_range == AVCOL_RANGE_JPEG ? 1 : 0},
        {"dstw", picture.width},
        {"dsth", picture.height},
        {"dst_format", AV_PIX_FMT_YUV420P},
        {"dst_range", 1},
        {"sws_flags", SWS_POINT | SWS_ACCURATE_RND},
    };
    for (const auto& [name, value] : options) {
        if (av_opt_set_int(scaler.get(), name, value, 0) < 0)
            return nullptr;
    }
    if (sws_init_context(scaler.get(), nullptr, nullptr) < 0)
        return nullptr;
    return scaler;
}

FramePtr convertToFullRange(const AVFrame& picture, int quality) {
    FramePtr converted(av_frame_alloc());
    const ScalerPtr scaler = rangeConverter(picture);
    if (!converted || !scaler)
        return nullptr;
    converted->format = kJpegFormat;
    converted->width = picture.width;
    converted->height = picture.height;
    converted->color_range = AVCOL_RANGE_JPEG;
    converted->pts = 1;
    converted->quality = quality;
    if (av_frame_get_buffer(converted.get(), 0) < 0 ||
        sws_scale(scaler.get(), picture.data, picture.linesize, 0, picture.height, converted->data,
                  converted->linesize) < 0)
        return nullptr;
    return converted;
}

PacketPtr encode(AVCodecContext& encoder, const AVFrame& picture) {
    PacketPtr packet(av_packet_alloc());
    if (!packet || avcodec_send_frame(&encoder, &picture) < 0)
        return nullptr;
    avcodec_send_frame(&encoder, nullptr);
    if (avcodec_receive_packet(&encoder, packet.get()) < 0)
        return nullptr;
    return packet;
}

bool writeFile(const AVPacket& packet, const QString& path, const QDateTime& takenAt) {
    QByteArray bytes(reinterpret_cast<const char*>(packet.data), packet.size);
    bytes.insert(kFirstMarkerBytes, exifSegment(takenAt));
    QSaveFile file(path);
    // Unbuffered: an error at the buffer's last flush would not reach commit().
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           file.write(bytes) == bytes.size() && file.commit();
}

}  // namespace
}  // namespace orvelle

int writeYUV420PJpeg(const uint8_t* y, const uint8_t* u, const uint8_t* v, int width, int height,
                     const QString& path, const QDateTime& takenAt) {
    orvelle::FramePtr picture(av_frame_alloc());
    if (!picture || !y || !u || !v)
        return -1;
    picture->format = AV_PIX_FMT_YUV420P;
    picture->color_range = AVCOL_RANGE_MPEG;
    picture->width = width & ~1;
    picture->height = height & ~1;
    const uint8_t* planes[] = {y, u, v};
    const int strides[] = {width, width / 2, width / 2};
    for (int i = 0; i < 3; ++i) {
        picture->data[i] = const_cast<uint8_t*>(planes[i]);
        picture->linesize[i] = strides[i];
    }
    return writeFrameJpeg(picture.get(), path, takenAt);
}

int writeFrameJpeg(const AVFrame* picture, const QString& path, const QDateTime& takenAt) {
    using namespace orvelle;
    if (!picture || picture->width < 1 || picture->height < 1)
        return -1;
    CodecContextPtr encoder = openEncoder(picture->width, picture->height);
    if (!encoder)
        return -1;
    FramePtr converted;
    if (!isFullRangeYuv420(*picture)) {
        converted = convertToFullRange(*picture, encoder->global_quality);
        if (!converted)
            return -1;
    }
    const PacketPtr packet = encode(*encoder, converted ? *converted : *picture);
    return packet && writeFile(*packet, path, takenAt) ? 0 : -1;
}
