#include "media/player/open_codec.h"

#include <cmath>

#include "media/media_log.h"
#include "media/stages/base_player_input.h"

namespace orvelle {

namespace {

/// More than any camera's sensor, little enough that a broken parameter set costs no gigabyte.
constexpr int64_t kMaxPixels = 4096 * 4096;
constexpr int kDefaultSampleRate = 8000;
constexpr int kDefaultG726Bits = 4;

bool saysNoParameters(int codecId) {
    switch (codecId) {
        case AV_CODEC_ID_PCM_ALAW:
        case AV_CODEC_ID_PCM_MULAW:
        case AV_CODEC_ID_PCM_S8:
        case AV_CODEC_ID_ADPCM_IMA_QT:
        case AV_CODEC_ID_ADPCM_G726:
        case AV_CODEC_ID_SPEEX:
            return true;
        default:
            return false;
    }
}

}  // namespace

OpenCodec::OpenCodec(KvBasePlayerInput& input, int mediaKind)
    : m_input(input), m_mediaKind(mediaKind) {}

OpenCodec::~OpenCodec() {
    close();
}

bool OpenCodec::open(int codecId, bool mayRetry, int bitsPerSample) {
    close();
    if (codecId == m_refusedId && !mayRetry)
        return false;
    const int result = tryOpen(codecId, bitsPerSample);
    if (result < 0) {
        close();
        if (codecId != m_refusedId)
            logRefusal(codecId, result);
    }
    m_refusedId = result < 0 ? codecId : -1;
    return result >= 0;
}

int OpenCodec::tryOpen(int codecId, int bitsPerSample) {
    m_codecId = codecId;
    if (codecId == AV_CODEC_ID_NONE)
        return AVERROR_DECODER_NOT_FOUND;
    AVCodecContext* context = nullptr;
    if (m_input.openCodec(m_mediaKind, codecId, &context, &m_codec) < 0)
        context = makeContext(codecId, bitsPerSample);
    m_context = context;
    if (!context)
        return AVERROR_DECODER_NOT_FOUND;
    m_frame.reset(av_frame_alloc());
    return m_frame ? avcodec_open2(context, m_codec, nullptr) : AVERROR(ENOMEM);
}

AVCodecContext* OpenCodec::makeContext(int codecId, int bitsPerSample) {
    const AVMediaType wanted =
        m_mediaKind == KvBasePlayerInput::kAudioKind ? AVMEDIA_TYPE_AUDIO : AVMEDIA_TYPE_VIDEO;
    m_codec = avcodec_find_decoder(static_cast<AVCodecID>(codecId));
    if (!m_codec || m_codec->type != wanted)
        return nullptr;
    AVCodecContext* context = avcodec_alloc_context3(m_codec);
    if (!context)
        return nullptr;
    context->thread_count = 1;
    context->max_pixels = kMaxPixels;
    if (saysNoParameters(codecId)) {
        context->sample_rate = kDefaultSampleRate;
        av_channel_layout_default(&context->ch_layout, 1);
        context->bits_per_coded_sample = bitsPerSample;
    }
    return context;
}

void OpenCodec::close() {
    m_frame.reset();
    AVCodecContext* context = m_context;
    if (context && m_input.closeCodec(m_mediaKind, &context, &m_codec) < 0)
        avcodec_free_context(&context);
    m_context = nullptr;
    m_codec = nullptr;
    m_codecId = AV_CODEC_ID_NONE;
}

int OpenCodec::send(const AVPacket& packet) {
    return avcodec_send_packet(m_context, &packet);
}

int OpenCodec::receive() {
    return avcodec_receive_frame(m_context, m_frame.get());
}

void OpenCodec::reset() {
    avcodec_flush_buffers(m_context);
    // What damage taught of reordering would stay a delay for ever; streams that do reorder say so.
    m_context.load()->has_b_frames = 0;
}

void OpenCodec::logRefusal(int codecId, int error) const {
    if (m_mediaKind == KvBasePlayerInput::kAudioKind)
        qDebug("avcodec_open2(audio = %d) failed = %d", codecId, error);
    else
        qCWarning(lcMedia, "no picture: codec %d cannot be opened (%d)", codecId, error);
}

int g726BitsPerSample(size_t bytes, double seconds) {
    if (seconds <= 0.0)
        return kDefaultG726Bits;
    const double bits = std::round(static_cast<double>(bytes) * 8 / (seconds * kDefaultSampleRate));
    return bits >= 2 && bits <= 5 ? static_cast<int>(bits) : kDefaultG726Bits;
}

}  // namespace orvelle
