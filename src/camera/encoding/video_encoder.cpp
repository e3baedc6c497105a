#include "camera/encoding/video_encoder.h"

#include <algorithm>

#include "camera/camera_log.h"
#include "frames/camera_codecs.h"
#include "link/limits.h"

extern "C" {
#include <libavutil/opt.h>
}

namespace orvelle {

namespace {

constexpr int kKeyIntervalSec = 2;
constexpr int64_t kMinBitsPerSecond = 64'000;
// The encoder may spend its whole rate buffer on one key frame; this leaves room for its errors.
constexpr int64_t kMaxRateBufferBits = int64_t{kMaxVideoFrameBytes} * 8 * 5 / 8;

void setOptions(AVCodecContext* context, AVCodecID codec) {
    // What a better preset saves in bits it costs in delay, and bits are there.
    av_opt_set(context->priv_data, "preset", "ultrafast", 0);
    av_opt_set(context->priv_data, "tune", "zerolatency", 0);
    av_opt_set(context->priv_data, "forced-idr", "1", 0);
    if (codec == AV_CODEC_ID_HEVC) {
        av_opt_set(context->priv_data, "x265-params",
                   "log-level=error:frame-threads=1:scenecut=0:repeat-headers=1", 0);
    }
}

void setRate(AVCodecContext* context, int64_t bitsPerSecond) {
    context->bit_rate = bitsPerSecond;
    context->rc_max_rate = bitsPerSecond;
    context->rc_buffer_size = static_cast<int>(std::min(bitsPerSecond, kMaxRateBufferBits));
}

CodecContextPtr makeContext(const AVCodec* encoder, const FeedFormat& format) {
    CodecContextPtr context(avcodec_alloc_context3(encoder));
    if (!context)
        return context;
    context->width = format.width;
    context->height = format.height;
    context->pix_fmt = AV_PIX_FMT_YUV420P;
    context->time_base = {1, format.framesPerSecond};
    context->framerate = {format.framesPerSecond, 1};
    context->gop_size = kKeyIntervalSec * format.framesPerSecond;
    context->max_b_frames = 0;
    context->thread_count = 1;
    setRate(context.get(), format.bitsPerSecond);
    setOptions(context.get(), encoder->id);
    return context;
}

}  // namespace

VideoEncoder::VideoEncoder() : m_packet(av_packet_alloc()) {}

QString VideoEncoder::open(AVCodecID codec, const FeedFormat& format) {
    m_context.reset();
    m_times.clear();
    m_pictureCount = 0;
    const AVCodec* encoder = avcodec_find_encoder(codec);
    if (!encoder)
        return QStringLiteral("no %1 encoder in this FFmpeg")
            .arg(QLatin1String(avcodec_get_name(codec)));
    CodecContextPtr context = makeContext(encoder, format);
    if (!context || avcodec_open2(context.get(), encoder, nullptr) < 0)
        return QStringLiteral("the %1 encoder refuses %2x%3")
            .arg(QLatin1String(encoder->name))
            .arg(format.width)
            .arg(format.height);
    m_context = std::move(context);
    m_format = format;
    return {};
}

std::optional<EncodedFrame> VideoEncoder::encode(AVFrame* picture, int64_t timeUs, bool forceKey) {
    if (!isOpen())
        return {};
    picture->pts = m_pictureCount++;
    picture->pict_type = forceKey ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    if (avcodec_send_frame(m_context.get(), picture) < 0) {
        qCWarning(lcCamera, "a picture could not be encoded");
        return {};
    }
    m_times.push_back(timeUs);
    return takePacket();
}

std::optional<EncodedFrame> VideoEncoder::takePacket() {
    if (avcodec_receive_packet(m_context.get(), m_packet.get()) < 0 || m_times.empty())
        return {};
    EncodedFrame frame;
    frame.codecId = static_cast<uint16_t>(cameraIdOfCodec(m_context->codec_id));
    frame.isKey = m_packet->flags & AV_PKT_FLAG_KEY;
    frame.timeUs = m_times.front();
    m_times.pop_front();
    const bool fits = m_packet->size <= kMaxVideoFrameBytes;
    if (fits)
        frame.bytes =
            std::make_shared<std::vector<uint8_t>>(m_packet->data, m_packet->data + m_packet->size);
    av_packet_unref(m_packet.get());
    if (fits)
        return frame;
    lowerRate();
    return {};
}

// Not every encoder takes another rate on its way. The next picture is a key frame.
void VideoEncoder::lowerRate() {
    FeedFormat lower = m_format;
    lower.bitsPerSecond = std::max(kMinBitsPerSecond, m_format.bitsPerSecond / 2);
    qCWarning(lcCamera, "a frame was too large; encoding at %lld bit/s from here",
              static_cast<long long>(lower.bitsPerSecond));
    const QString fault = open(m_context->codec_id, lower);
    if (!fault.isEmpty())
        qCWarning(lcCamera, "%s", qPrintable(fault));
}

}  // namespace orvelle
