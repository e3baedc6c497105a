#include "render/audio_converter.h"

#include <QtDebug>

#include <algorithm>

namespace {

constexpr int kBufferSamples = 4096;
constexpr size_t kFifoBuffers = 4;

// The camera's sound is mono or stereo whatever a damaged header claims; more channels are read in
// their usual order so that nothing lies beyond the frame.
AVChannelLayout layoutOf(int channels) {
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, channels);
    return layout;
}

int64_t maskOf(int channels) {
    return static_cast<int64_t>(layoutOf(channels).u.mask);
}

}  // namespace

bool KvAudioConverter::Source::operator==(const Source& other) const {
    return sampleRate == other.sampleRate && channelLayout == other.channelLayout &&
           channels == other.channels && sampleFormat == other.sampleFormat;
}

KvAudioConverter::KvAudioConverter(int sampleRate, int64_t channelLayout, int channels,
                                   int sampleFormat)
    : m_sampleRate(sampleRate),
      m_channelLayout(channelLayout),
      m_channels(channels),
      m_sampleFormat(sampleFormat) {
    qDebug("rate = %d, layout = %lld, channels = %d, format = %d", sampleRate,
           static_cast<long long>(channelLayout), channels, sampleFormat);
    setBufferSamples(kBufferSamples);
}

KvAudioConverter::~KvAudioConverter() = default;

void KvAudioConverter::setBufferSamples(int samples) {
    m_buffer.reset();
    m_fifo.reset();
    m_bufferSamples = std::max(samples, 0);
    m_bytesPerSample = av_get_bytes_per_sample(static_cast<AVSampleFormat>(m_sampleFormat));
    const int bytes = chunkSize();
    if (bytes < 1)
        return;
    m_buffer = std::make_unique<uint8_t[]>(static_cast<size_t>(bytes));
    m_fifo.reset(
        av_fifo_alloc2(kFifoBuffers * static_cast<size_t>(bytes), 1, AV_FIFO_FLAG_AUTO_GROW));
}

int KvAudioConverter::convert(const AVFrame* frame) {
    if (!m_fifo || !frame || frame->nb_samples < 0 || !prepareResampler(frame))
        return -1;
    uint8_t* output[] = {m_buffer.get()};
    auto** input = const_cast<const uint8_t**>(frame->extended_data);
    int converted =
        swr_convert(m_resampler.get(), output, m_bufferSamples, input, frame->nb_samples);
    while (converted >= 1) {
        const int bytes = converted * m_bytesPerSample * m_channels;
        if (av_fifo_write(m_fifo.get(), m_buffer.get(), static_cast<size_t>(bytes)) < 0)
            return -1;
        // No new samples rather than a null input, which would end the stream and bend the
        // waveform at every frame's edge.
        converted = swr_convert(m_resampler.get(), output, m_bufferSamples, input, 0);
    }
    return converted;
}

int KvAudioConverter::read(void* buffer, int size) {
    const int wanted = size < 0 ? chunkSize() : size;
    if (!m_fifo || av_fifo_can_read(m_fifo.get()) < static_cast<size_t>(wanted) ||
        av_fifo_read(m_fifo.get(), buffer, static_cast<size_t>(wanted)) < 0)
        return -1;
    return wanted;
}

int KvAudioConverter::chunkSize() const {
    return m_bufferSamples * m_bytesPerSample * m_channels;
}

void KvAudioConverter::reset() {
    if (m_fifo)
        av_fifo_reset2(m_fifo.get());
}

bool KvAudioConverter::prepareResampler(const AVFrame* frame) {
    const int channels = frame->ch_layout.nb_channels;
    if (channels < 1 || frame->sample_rate < 1)
        return false;
    const Source source{frame->sample_rate, maskOf(channels), channels, frame->format};
    if (m_resampler && source == m_source)
        return true;

    m_source = source;
    m_resampler.reset();
    AVChannelLayout from = layoutOf(channels);
    AVChannelLayout to{};
    SwrContext* resampler = nullptr;
    if (av_channel_layout_from_mask(&to, static_cast<uint64_t>(m_channelLayout)) < 0 ||
        swr_alloc_set_opts2(&resampler, &to, static_cast<AVSampleFormat>(m_sampleFormat),
                            m_sampleRate, &from, static_cast<AVSampleFormat>(frame->format),
                            frame->sample_rate, 0, nullptr) < 0)
        return false;
    orvelle::ResamplerPtr built(resampler);
    if (swr_init(built.get()) < 0)
        return false;
    qDebug("writeAudio rate = %d, layout = %lld, channels = %d, format = %d", source.sampleRate,
           static_cast<long long>(source.channelLayout), channels, source.sampleFormat);
    m_resampler = std::move(built);
    return true;
}
