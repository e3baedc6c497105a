#include "media/recording/recording_sound_encoder.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "render/audio_converter.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
}

namespace orvelle {

namespace {

constexpr int kMaxChannels = 2;
constexpr int64_t kBitsPerSample = 3;
constexpr int64_t kMinBitsPerSec = 24'000, kMaxBitsPerSec = 128'000;
/// The longest difference between samples and packet times that is not a gap in the sound.
constexpr double kGapSec = 0.2;
/// The share of that difference that each block makes good: slow enough to smooth stamps that
/// jitter, fast enough for any clock.
constexpr double kPull = 1.0 / 16;

/// The least rate of the encoder's that loses nothing, or its highest one.
int rateFor(const AVCodec& encoder, int wanted) {
    int best = 0;
    for (const int* rate = encoder.supported_samplerates; rate && *rate > 0; ++rate) {
        const bool isBetter = best < wanted ? *rate > best : *rate >= wanted && *rate < best;
        if (isBetter)
            best = *rate;
    }
    return best;
}

double durationSec(const AVFrame& frame) {
    return static_cast<double>(frame.nb_samples) / frame.sample_rate;
}

}  // namespace

RecordingSoundEncoder::RecordingSoundEncoder() = default;
RecordingSoundEncoder::~RecordingSoundEncoder() = default;

StreamParameters RecordingSoundEncoder::open(const StreamParameters& source) {
    StreamParameters track;
    track.codec.reset(avcodec_parameters_alloc());
    if (!track.codec || !openDecoder(source) || !openEncoder(source) || !makeBlock() ||
        avcodec_parameters_from_context(track.codec.get(), m_encoder.get()) < 0)
        return {};
    const AVChannelLayout& layout = m_encoder->ch_layout;
    m_converter = std::make_unique<KvAudioConverter>(m_encoder->sample_rate,
                                                     static_cast<int64_t>(layout.u.mask),
                                                     layout.nb_channels, AV_SAMPLE_FMT_FLT);
    m_converter->setBufferSamples(m_encoder->frame_size);
    track.timeBase = {1, m_encoder->sample_rate};
    return track;
}

bool RecordingSoundEncoder::openDecoder(const StreamParameters& source) {
    const AVCodec* codec = avcodec_find_decoder(source.codec->codec_id);
    m_decoder.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!m_decoder || avcodec_parameters_to_context(m_decoder.get(), source.codec.get()) < 0)
        return false;
    m_decoder->thread_count = 1;
    return avcodec_open2(m_decoder.get(), codec, nullptr) >= 0;
}

bool RecordingSoundEncoder::openEncoder(const StreamParameters& source) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    m_encoder.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!m_encoder)
        return false;
    const int channels = std::clamp(source.codec->ch_layout.nb_channels, 1, kMaxChannels);
    m_encoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
    m_encoder->sample_rate = rateFor(*codec, source.codec->sample_rate);
    av_channel_layout_default(&m_encoder->ch_layout, channels);
    m_encoder->bit_rate = std::clamp(kBitsPerSample * m_encoder->sample_rate * channels,
                                     kMinBitsPerSec, kMaxBitsPerSec);
    m_encoder->time_base = {1, m_encoder->sample_rate};
    m_encoder->thread_count = 1;
    m_encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    return avcodec_open2(m_encoder.get(), codec, nullptr) >= 0;
}

bool RecordingSoundEncoder::makeBlock() {
    m_decoded.reset(av_frame_alloc());
    m_block.reset(av_frame_alloc());
    m_packet.reset(av_packet_alloc());
    if (!m_decoded || !m_block || !m_packet)
        return false;
    m_block->format = m_encoder->sample_fmt;
    m_block->sample_rate = m_encoder->sample_rate;
    m_block->nb_samples = m_encoder->frame_size;
    m_packed.resize(static_cast<size_t>(m_encoder->frame_size * m_encoder->ch_layout.nb_channels));
    return av_channel_layout_copy(&m_block->ch_layout, &m_encoder->ch_layout) >= 0 &&
           av_frame_get_buffer(m_block.get(), 0) >= 0;
}

int RecordingSoundEncoder::push(const AVPacket& packet, double startSec, const Deliver& deliver) {
    m_endSec = startSec;
    int result = 0;
    if (avcodec_send_packet(m_decoder.get(), &packet) < 0)
        return result;
    while (result >= 0 && avcodec_receive_frame(m_decoder.get(), m_decoded.get()) >= 0) {
        convert(*m_decoded);
        result = encodeBlocks(std::numeric_limits<int>::max(), deliver);
    }
    return result;
}

void RecordingSoundEncoder::convert(const AVFrame& frame) {
    if (m_converter->convert(&frame) < 0)
        return;
    m_waitingSec += durationSec(frame);
    m_endSec += durationSec(frame);
}

int RecordingSoundEncoder::drain(const Deliver& deliver) {
    int result = 0;
    if (m_waitingSec > 0.0) {
        convertSilence();
        result = encodeBlocks(1, deliver);
    }
    return result < 0 ? result : encode(nullptr, deliver);
}

void RecordingSoundEncoder::convertSilence() {
    const FramePtr silence(av_frame_alloc());
    if (!silence)
        return;
    silence->format = m_encoder->sample_fmt;
    silence->sample_rate = m_encoder->sample_rate;
    silence->nb_samples = m_encoder->frame_size;
    if (av_channel_layout_copy(&silence->ch_layout, &m_encoder->ch_layout) < 0 ||
        av_frame_get_buffer(silence.get(), 0) < 0)
        return;
    av_samples_set_silence(silence->extended_data, 0, silence->nb_samples,
                           silence->ch_layout.nb_channels, m_encoder->sample_fmt);
    convert(*silence);
}

int RecordingSoundEncoder::encodeBlocks(int most, const Deliver& deliver) {
    int result = 0;
    for (int blocks = 0; result >= 0 && blocks < most && readBlock(); ++blocks) {
        m_block->pts = placeBlock();
        result = encode(m_block.get(), deliver);
    }
    return result;
}

bool RecordingSoundEncoder::readBlock() {
    if (m_converter->read(m_packed.data(), -1) < 0 || av_frame_make_writable(m_block.get()) < 0)
        return false;
    const int channels = m_block->ch_layout.nb_channels;
    for (int channel = 0; channel < channels; ++channel) {
        auto* samples = reinterpret_cast<float*>(m_block->extended_data[channel]);
        for (int i = 0; i < m_block->nb_samples; ++i)
            samples[i] = m_packed[static_cast<size_t>(i * channels + channel)];
    }
    return true;
}

int64_t RecordingSoundEncoder::placeBlock() {
    const double offsetSec = m_endSec - m_waitingSec - m_blockSec;
    const bool isGap = m_blockTicks < 0 || std::abs(offsetSec) > kGapSec;
    m_blockSec += isGap ? offsetSec : offsetSec * kPull;
    m_blockTicks =
        std::max<int64_t>(std::llround(m_blockSec * m_encoder->sample_rate), m_blockTicks + 1);
    const int64_t ticks = m_blockTicks;
    const double blockSec = durationSec(*m_block);
    m_blockSec += blockSec;
    m_waitingSec = std::max(0.0, m_waitingSec - blockSec);
    return ticks;
}

int RecordingSoundEncoder::encode(const AVFrame* block, const Deliver& deliver) {
    if (avcodec_send_frame(m_encoder.get(), block) < 0)
        return 0;
    int result = 0;
    while (result >= 0 && avcodec_receive_packet(m_encoder.get(), m_packet.get()) >= 0) {
        result = deliver(*m_packet);
        av_packet_unref(m_packet.get());
    }
    return result;
}

}  // namespace orvelle
