#include "camera/sources/stream_normaliser.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "camera/camera_log.h"
#include "camera/encoding/painter.h"
#include "camera/encoding/time_base.h"
#include "frames/camera_codecs.h"
#include "frames/parameter_sets.h"
#include "link/limits.h"

namespace orvelle {

namespace {

constexpr size_t kMaxGroupPackets = 600;
constexpr size_t kMaxGroupBytes = 16 * 1024 * 1024;
constexpr int kMaxFramesPerSecond = 60;
constexpr int kUsualFramesPerSecond = 25;
constexpr int64_t kMaxPixels = 8192 * 4320;
constexpr int64_t kMaxLatenessUs = 500'000;

int framesPerSecond(const AVStream& stream) {
    const AVRational rate =
        stream.avg_frame_rate.num > 0 ? stream.avg_frame_rate : stream.r_frame_rate;
    if (rate.num <= 0 || rate.den <= 0)
        return kUsualFramesPerSecond;
    return std::clamp(static_cast<int>(std::lround(av_q2d(rate))), 1, kMaxFramesPerSecond);
}

FeedFormat fittedFormat(int width, int height, int framesPerSecond, int maxHeight) {
    FeedFormat format;
    const double scale = height > maxHeight ? double(maxHeight) / height : 1.0;
    format.width = std::max(2, static_cast<int>(std::lround(width * scale)) & ~1);
    format.height = std::max(2, static_cast<int>(std::lround(height * scale)) & ~1);
    format.framesPerSecond = framesPerSecond;
    format.bitsPerSecond = usualBitRate(format);
    return format;
}

bool canPass(AVCodecID codec) {
    return codec == AV_CODEC_ID_H264 || codec == AV_CODEC_ID_HEVC;
}

}  // namespace

StreamNormaliser::StreamNormaliser(NormaliserConfig config, Deliver deliver)
    : m_config(config),
      m_deliver(std::move(deliver)),
      m_filtered(av_packet_alloc()),
      m_picture(av_frame_alloc()) {}

QString StreamNormaliser::open(const AVStream& stream) {
    m_group.clear();
    m_lastTimeUs = AV_NOPTS_VALUE;
    m_decoder.reset();
    m_filter.reset();
    m_parameters.reset(avcodec_parameters_alloc());
    const AVCodecParameters& source = *stream.codecpar;
    if (!m_parameters || avcodec_parameters_copy(m_parameters.get(), &source) < 0)
        return QStringLiteral("out of memory");
    if (source.width <= 0 || source.height <= 0)
        return QStringLiteral("the source's picture size is unknown");
    m_format =
        fittedFormat(source.width, source.height, framesPerSecond(stream), m_config.maxHeight);
    if (m_config.bitsPerSecond > 0)
        m_format.bitsPerSecond = m_config.bitsPerSecond;
    if (!canPass(source.codec_id))
        return startEncoding("its codec");
    return source.video_delay > 0 ? startEncoding("B frames") : openFilter();
}

QString StreamNormaliser::openFilter() {
    const AVBitStreamFilter* filter = av_bsf_get_by_name(
        m_parameters->codec_id == AV_CODEC_ID_H264 ? "h264_mp4toannexb" : "hevc_mp4toannexb");
    AVBSFContext* context = nullptr;
    if (!filter || av_bsf_alloc(filter, &context) < 0)
        return QStringLiteral("no Annex B filter in this FFmpeg");
    m_filter.reset(context);
    context->time_base_in = kMicroseconds;
    if (avcodec_parameters_copy(context->par_in, m_parameters.get()) < 0 ||
        av_bsf_init(context) < 0)
        return startEncoding("an unusable stream header");
    const AVCodecParameters& out = *context->par_out;
    m_parameterSets = parameterSets(out.codec_id, out.extradata, size_t(out.extradata_size));
    m_format.width = out.width;
    m_format.height = out.height;
    m_format.bitsPerSecond = std::max(m_format.bitsPerSecond, out.bit_rate);
    return {};
}

QString StreamNormaliser::startEncoding(const char* reason) {
    qCInfo(lcCamera, "the source's video is encoded anew: %s", reason);
    m_filter.reset();
    const AVCodec* decoder = avcodec_find_decoder(m_parameters->codec_id);
    CodecContextPtr context(decoder ? avcodec_alloc_context3(decoder) : nullptr);
    if (!context || avcodec_parameters_to_context(context.get(), m_parameters.get()) < 0)
        return QStringLiteral("no decoder for the source's video");
    context->pkt_timebase = kMicroseconds;
    context->thread_count = 1;
    context->max_pixels = kMaxPixels;
    if (avcodec_open2(context.get(), decoder, nullptr) < 0)
        return QStringLiteral("the source's video cannot be decoded");
    m_decoder = std::move(context);
    m_isDecoderCurrent = false;
    m_isKeyDue = true;
    m_format = fittedFormat(m_parameters->width, m_parameters->height, m_format.framesPerSecond,
                            m_config.maxHeight);
    if (m_config.bitsPerSecond > 0)
        m_format.bitsPerSecond = m_config.bitsPerSecond;
    return m_encoder.open(m_config.codec, m_format);
}

void StreamNormaliser::push(const AVPacket& packet, bool wanted, bool forceKey) {
    remember(packet);
    m_isKeyDue = m_isKeyDue || forceKey;
    const bool isReordered = m_lastTimeUs != AV_NOPTS_VALUE && packet.pts < m_lastTimeUs;
    m_lastTimeUs = packet.pts;
    if (m_filter && isReordered)
        startEncoding("B frames");
    else if (m_filter && !pass(packet))
        startEncoding("a frame above the limit");
    if (!m_decoder)
        return;
    if (!wanted)
        m_isDecoderCurrent = false;
    else if (m_isDecoderCurrent)
        decode(packet, true);
    else
        catchUp();
}

// False when a frame came out too large for the link.
bool StreamNormaliser::pass(const AVPacket& packet) {
    PacketPtr copy(av_packet_clone(&packet));
    if (!copy || av_bsf_send_packet(m_filter.get(), copy.get()) < 0)
        return true;
    while (av_bsf_receive_packet(m_filter.get(), m_filtered.get()) >= 0) {
        const EncodedFrame frame = filteredFrame();
        av_packet_unref(m_filtered.get());
        if (frame.bytes->size() > size_t{kMaxVideoFrameBytes})
            return false;
        m_deliver(frame);
    }
    return true;
}

EncodedFrame StreamNormaliser::filteredFrame() const {
    const AVPacket& packet = *m_filtered;
    EncodedFrame frame;
    frame.codecId = static_cast<uint16_t>(cameraIdOfCodec(m_parameters->codec_id));
    frame.isKey = packet.flags & AV_PKT_FLAG_KEY;
    frame.timeUs = packet.pts;
    std::vector<uint8_t> bytes;
    if (frame.isKey &&
        parameterSets(m_parameters->codec_id, packet.data, size_t(packet.size)).empty())
        bytes = m_parameterSets;
    bytes.insert(bytes.end(), packet.data, packet.data + packet.size);
    frame.bytes = std::make_shared<std::vector<uint8_t>>(std::move(bytes));
    return frame;
}

void StreamNormaliser::remember(const AVPacket& packet) {
    if (packet.flags & AV_PKT_FLAG_KEY) {
        m_group.clear();
        m_groupBytes = 0;
    } else if (m_group.empty()) {
        return;
    }
    PacketPtr copy(av_packet_clone(&packet));
    m_groupBytes += size_t(packet.size);
    if (copy && m_group.size() < kMaxGroupPackets && m_groupBytes <= kMaxGroupBytes)
        m_group.push_back(std::move(copy));
    else
        m_group.clear();
}

// Decodes what was let go by unseen, so that a viewer need not wait for the source's next
// key frame.
void StreamNormaliser::catchUp() {
    if (m_group.empty())
        return;
    avcodec_flush_buffers(m_decoder.get());
    for (const PacketPtr& packet : m_group)
        decode(*packet, packet == m_group.back());
    m_isDecoderCurrent = true;
}

void StreamNormaliser::decode(const AVPacket& packet, bool isShown) {
    if (avcodec_send_packet(m_decoder.get(), &packet) < 0)
        qCDebug(lcCamera, "a packet of the source cannot be decoded");
    while (avcodec_receive_frame(m_decoder.get(), m_picture.get()) >= 0) {
        if (isShown)
            encodePicture(m_picture.get());
        av_frame_unref(m_picture.get());
    }
}

void StreamNormaliser::encodePicture(AVFrame* picture) {
    const int64_t timeUs = picture->best_effort_timestamp;
    if (m_config.isLive && cameraClockUs() - timeUs > kMaxLatenessUs)
        return;
    AVFrame* input = fitted(picture);
    if (!input || !m_encoder.isOpen())
        return;
    const bool forceKey = std::exchange(m_isKeyDue, false);
    if (const auto frame = m_encoder.encode(input, timeUs, forceKey))
        m_deliver(*frame);
}

AVFrame* StreamNormaliser::fitted(AVFrame* picture) {
    if (picture->format == AV_PIX_FMT_YUV420P && picture->width == m_format.width &&
        picture->height == m_format.height)
        return picture;
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), picture->width, picture->height,
                                        static_cast<AVPixelFormat>(picture->format), m_format.width,
                                        m_format.height, AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr,
                                        nullptr, nullptr));
    if (!m_fittedPicture || m_fittedPicture->width != m_format.width ||
        m_fittedPicture->height != m_format.height)
        m_fittedPicture = makePicture(m_format.width, m_format.height);
    if (!m_scaler || !m_fittedPicture || av_frame_make_writable(m_fittedPicture.get()) < 0)
        return nullptr;
    sws_scale(m_scaler.get(), picture->data, picture->linesize, 0, picture->height,
              m_fittedPicture->data, m_fittedPicture->linesize);
    return m_fittedPicture.get();
}

}  // namespace orvelle
