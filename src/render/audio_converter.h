#pragma once

#include <QObject>

#include <cstdint>
#include <memory>

#include "frames/ffmpeg_io_ptr.h"

/// Turns sound frames of any format into packed samples of one format and queues their bytes.
/// Used by one thread at a time.
class KvAudioConverter : public QObject {
    Q_OBJECT
public:
    /// The destination: rate in Hz, channel mask, channel count and a packed AVSampleFormat.
    KvAudioConverter(int sampleRate, int64_t channelLayout, int channels, int sampleFormat);
    ~KvAudioConverter() override;

    /// Converts at most `samples` at a time; drops what is queued. Below 1 frees the buffers.
    void setBufferSamples(int samples);

    /// Converts and queues one frame, building the resampler anew when the source's format changed.
    /// Returns 0, or negative when nothing could be converted.
    int convert(const AVFrame* frame);

    /// Takes exactly `size` bytes (negative: chunkSize()) and returns their count, or -1 and takes
    /// nothing when fewer are queued.
    int read(void* buffer, int size);

    /// The bytes of one full conversion buffer.
    int chunkSize() const;

    /// Drops what is queued.
    void reset();

private:
    struct Source {
        int sampleRate = -1;
        int64_t channelLayout = -1;
        int channels = -1;
        int sampleFormat = -1;
        bool operator==(const Source& other) const;
    };

    bool prepareResampler(const AVFrame* frame);

    // Fixed after construction.
    const int m_sampleRate;
    const int64_t m_channelLayout;
    const int m_channels;
    const int m_sampleFormat;

    Source m_source;
    orvelle::ResamplerPtr m_resampler;
    std::unique_ptr<uint8_t[]> m_buffer;
    orvelle::FifoPtr m_fifo;
    int m_bufferSamples = 0;
    int m_bytesPerSample = 0;
};
