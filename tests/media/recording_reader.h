#pragma once

#include <QDateTime>
#include <QFile>
#include <QString>

#include <algorithm>
#include <array>
#include <vector>

#include "frames/ffmpeg_io_ptr.h"
#include "support/tone.h"

namespace orvelle::test {

/// A media file opened again and read to its end.
class RecordingReader {
public:
    explicit RecordingReader(const QString& path) {
        AVFormatContext* opened = nullptr;
        avformat_open_input(&opened, path.toUtf8().constData(), nullptr, nullptr);
        m_format.reset(opened);
        if (m_format)
            avformat_find_stream_info(opened, nullptr);
        while (m_format && readPacket()) {
        }
    }
    bool isOpen() const { return m_format != nullptr; }
    unsigned streams() const { return m_format->nb_streams; }
    const AVCodecParameters& codec(unsigned i) const { return *m_format->streams[i]->codecpar; }
    double durationSec() const { return static_cast<double>(m_format->duration) / 1e6; }
    int packets(size_t stream) const { return static_cast<int>(m_packets.at(stream).size()); }
    const AVPacket& first(size_t stream) const { return *m_packets.at(stream).front(); }
    double sec(size_t stream, size_t packet) const {
        return sec(stream, m_packets.at(stream).at(packet)->pts);
    }
    double lastSec(size_t stream) const { return sec(stream, m_packets.at(stream).back()->pts); }
    double endSec(size_t stream) const {
        const AVPacket& last = *m_packets.at(stream).back();
        return sec(stream, last.pts + last.duration);
    }

    QDateTime createdAt() const {
        const AVDictionaryEntry* time =
            av_dict_get(m_format->metadata, "creation_time", nullptr, 0);
        return QDateTime::fromString(QLatin1String(time ? time->value : ""), Qt::ISODateWithMs);
    }
    /// Whether each packet of the first stream becomes a picture without a fault.
    bool decodesAllPictures() const {
        const AVCodec* decoder = avcodec_find_decoder(codec(0).codec_id);
        const CodecContextPtr context(avcodec_alloc_context3(decoder));
        avcodec_parameters_to_context(context.get(), &codec(0));
        context->err_recognition = AV_EF_EXPLODE;
        avcodec_open2(context.get(), decoder, nullptr);
        const FramePtr frame(av_frame_alloc());
        int pictures = 0;
        const auto receive = [&] {
            while (avcodec_receive_frame(context.get(), frame.get()) == 0)
                pictures += !(frame->flags & AV_FRAME_FLAG_CORRUPT) && !frame->decode_error_flags;
        };
        for (const PacketPtr& packet : m_packets[0]) {
            if (avcodec_send_packet(context.get(), packet.get()) < 0)
                return false;
            receive();
        }
        avcodec_send_packet(context.get(), nullptr);
        receive();
        return pictures == packets(0);
    }

    /// The first channel of the second stream.
    std::vector<int16_t> decodeSound() const {
        std::vector<int16_t> samples;
        decodeSound([&](const AVFrame& frame) { append(frame, samples); });
        return samples;
    }
    /// When sound set in after at least a tenth of silence, in a stream of 8 kHz.
    std::vector<double> burstSecs() const {
        std::vector<double> bursts;
        double quietSec = 1.0;
        decodeSound([&](const AVFrame& frame) {
            std::vector<int16_t> samples;
            append(frame, samples);
            for (size_t i = 0; i < samples.size(); ++i, quietSec += 1.0 / 8000) {
                if (std::abs(samples[i]) < 4000)
                    continue;
                if (quietSec > 0.1)
                    bursts.push_back(sec(1, frame.pts) + static_cast<double>(i) / 8000);
                quietSec = 0.0;
            }
        });
        return bursts;
    }

private:
    template <class Take>
    void decodeSound(Take take) const {
        const AVCodec* decoder = avcodec_find_decoder(codec(1).codec_id);
        const CodecContextPtr context(avcodec_alloc_context3(decoder));
        avcodec_parameters_to_context(context.get(), &codec(1));
        avcodec_open2(context.get(), decoder, nullptr);
        const FramePtr frame(av_frame_alloc());
        for (const PacketPtr& packet : m_packets[1]) {
            avcodec_send_packet(context.get(), packet.get());
            while (avcodec_receive_frame(context.get(), frame.get()) == 0)
                take(*frame);
        }
    }
    bool readPacket() {
        PacketPtr packet(av_packet_alloc());
        if (av_read_frame(m_format.get(), packet.get()) < 0)
            return false;
        m_packets.at(static_cast<size_t>(packet->stream_index)).push_back(std::move(packet));
        return true;
    }
    double sec(size_t stream, int64_t ticks) const {
        return static_cast<double>(ticks) * av_q2d(m_format->streams[stream]->time_base);
    }
    static void append(const AVFrame& frame, std::vector<int16_t>& samples) {
        for (int i = 0; i < frame.nb_samples; ++i) {
            const bool isFloat = frame.format == AV_SAMPLE_FMT_FLTP;
            const auto* floats = reinterpret_cast<const float*>(frame.data[0]);
            const auto* integers = reinterpret_cast<const int16_t*>(frame.data[0]);
            samples.push_back(isFloat
                                  ? static_cast<int16_t>(std::clamp(floats[i], -1.0F, 1.0F) * 32767)
                                  : integers[i]);
        }
    }

    InputFormatPtr m_format;
    std::array<std::vector<PacketPtr>, 2> m_packets;
};

/// The share of the tone in mono samples of 8 kHz, without the encoder's first moments.
inline double toneShareOf(const std::vector<int16_t>& samples) {
    std::vector<int16_t> stereo;
    for (size_t i = std::min<size_t>(samples.size(), 2048); i < samples.size(); ++i)
        stereo.insert(stereo.end(), 2, samples[i]);
    return toneShare(stereo.data(), static_cast<int>(stereo.size() / 2), 8000);
}

/// The types of a file's outermost boxes.
inline QByteArray boxesOf(const QString& path) {
    QFile file(path);
    QByteArray types;
    for (qint64 at = 0; file.isOpen() || file.open(QIODevice::ReadOnly);) {
        const QByteArray header = file.seek(at) ? file.read(16) : QByteArray();
        if (header.size() < 8)
            break;
        qint64 size = 0;
        const bool isLong = header.startsWith(QByteArray("\0\0\0\1", 4));
        for (int i = isLong ? 8 : 0; i < (isLong ? 16 : 4) && i < header.size(); ++i)
            size = size << 8 | uint8_t(header[i]);
        types += (types.isEmpty() ? "" : " ") + header.mid(4, 4);
        at += std::max<qint64>(size, 8);
    }
    return types;
}

}  // namespace orvelle::test
