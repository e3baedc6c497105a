#include "camera/encoding/audio_encoder.h"

#include <algorithm>
#include <cmath>

#include "camera/encoding/adts.h"
#include "camera/encoding/time_base.h"
#include "frames/camera_codecs.h"
#include "link/limits.h"

namespace orvelle {

namespace {

constexpr int kAacSampleRate = 16'000;
constexpr int kAacBitsPerSecond = 32'000;
constexpr int kAlawSampleRate = 8'000;
constexpr int kAlawBlockSamples = kAlawSampleRate / 25;
constexpr int64_t kMaxTimeErrorUs = 100'000;

void storeSamples(const float* samples, int count, AVFrame* block) {
    if (block->format == AV_SAMPLE_FMT_FLTP) {
        std::copy_n(samples, count, reinterpret_cast<float*>(block->data[0]));
        return;
    }
    auto* out = reinterpret_cast<int16_t*>(block->data[0]);
    for (int i = 0; i < count; ++i)
        out[i] = static_cast<int16_t>(std::lrint(std::clamp(samples[i], -1.0F, 1.0F) * 32767.0F));
}

}  // namespace

QString AudioEncoder::open(AVCodecID codec) {
    m_context.reset();
    m_pending.clear();
    const bool isAac = codec == AV_CODEC_ID_AAC;
    const AVCodec* encoder = avcodec_find_encoder(codec);
    CodecContextPtr context(avcodec_alloc_context3(encoder));
    if (!encoder || !context)
        return QStringLiteral("no %1 encoder in this FFmpeg")
            .arg(QLatin1String(avcodec_get_name(codec)));
    context->sample_fmt = isAac ? AV_SAMPLE_FMT_FLTP : AV_SAMPLE_FMT_S16;
    context->sample_rate = isAac ? kAacSampleRate : kAlawSampleRate;
    context->bit_rate = isAac ? kAacBitsPerSecond : 0;
    context->time_base = kMicroseconds;
    av_channel_layout_default(&context->ch_layout, 1);
    // The header lets the ADTS format be read off the encoder's own configuration.
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(context.get(), encoder, nullptr) < 0)
        return QStringLiteral("the %1 encoder cannot be opened").arg(QLatin1String(encoder->name));
    m_adts = isAac ? adtsFormatOf(context->extradata, context->extradata_size) : std::nullopt;
    m_samplesPerFrame = isAac ? context->frame_size : kAlawBlockSamples;
    m_context = std::move(context);
    return makeBlock() ? QString() : QStringLiteral("out of memory");
}

bool AudioEncoder::makeBlock() {
    m_block.reset(av_frame_alloc());
    m_packet.reset(av_packet_alloc());
    if (!m_block || !m_packet)
        return false;
    m_block->format = m_context->sample_fmt;
    m_block->sample_rate = m_context->sample_rate;
    m_block->nb_samples = m_samplesPerFrame;
    return av_channel_layout_copy(&m_block->ch_layout, &m_context->ch_layout) >= 0 &&
           av_frame_get_buffer(m_block.get(), 0) >= 0;
}

int AudioEncoder::sampleRate() const {
    return m_context ? m_context->sample_rate : 0;
}

// Times follow the sample count; only a real gap in the input moves them.
void AudioEncoder::encode(const float* samples, int count, int64_t timeUs, const Deliver& deliver) {
    const int64_t expectedUs = m_pendingTimeUs + durationUs(m_pending.size());
    if (timeUs != AV_NOPTS_VALUE && std::llabs(timeUs - expectedUs) > kMaxTimeErrorUs)
        m_pendingTimeUs = timeUs - durationUs(m_pending.size());
    m_pending.insert(m_pending.end(), samples, samples + count);
    while (m_pending.size() >= size_t(m_samplesPerFrame))
        encodeBlock(deliver);
}

int64_t AudioEncoder::durationUs(size_t samples) const {
    return static_cast<int64_t>(samples) * 1'000'000 / m_context->sample_rate;
}

void AudioEncoder::encodeBlock(const Deliver& deliver) {
    if (av_frame_make_writable(m_block.get()) < 0)
        return;
    storeSamples(m_pending.data(), m_samplesPerFrame, m_block.get());
    m_pending.erase(m_pending.begin(), m_pending.begin() + m_samplesPerFrame);
    m_block->pts = m_pendingTimeUs;
    m_pendingTimeUs += durationUs(m_samplesPerFrame);
    if (avcodec_send_frame(m_context.get(), m_block.get()) < 0)
        return;
    while (avcodec_receive_packet(m_context.get(), m_packet.get()) >= 0) {
        deliverPacket(deliver);
        av_packet_unref(m_packet.get());
    }
}

void AudioEncoder::deliverPacket(const Deliver& deliver) {
    std::vector<uint8_t> bytes;
    if (m_adts)
        bytes = adtsHeader(*m_adts, m_packet->size);
    bytes.insert(bytes.end(), m_packet->data, m_packet->data + m_packet->size);
    if (bytes.size() > kMaxAudioFrameBytes)
        return;
    EncodedFrame frame;
    frame.medium = Medium::kAudio;
    frame.codecId = static_cast<uint16_t>(cameraIdOfCodec(m_context->codec_id));
    frame.isKey = true;
    frame.timeUs = m_packet->pts;
    frame.bytes = std::make_shared<std::vector<uint8_t>>(std::move(bytes));
    deliver(frame);
}

}  // namespace orvelle
