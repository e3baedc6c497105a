#pragma once

#include <QString>

#include <optional>

#include "frames/ffmpeg_io_ptr.h"
#include "frames/picture_clock.h"

namespace orvelle::test {

/// The pictures of a file as a player that seeks shows them, by their picture clock.
class RecordingPictures {
public:
    struct Picture {
        double sec;
        int64_t clock;
    };

    explicit RecordingPictures(const QString& path) {
        AVFormatContext* opened = nullptr;
        avformat_open_input(&opened, path.toUtf8().constData(), nullptr, nullptr);
        m_format.reset(opened);
        if (!m_format || avformat_find_stream_info(opened, nullptr) < 0)
            return;
        const AVCodecParameters& codec = *m_format->streams[0]->codecpar;
        const AVCodec* decoder = avcodec_find_decoder(codec.codec_id);
        m_decoder.reset(avcodec_alloc_context3(decoder));
        avcodec_parameters_to_context(m_decoder.get(), &codec);
        m_decoder->thread_count = 1;
        avcodec_open2(m_decoder.get(), decoder, nullptr);
    }

    /// The first whole picture from `sec` on, counted from the file's beginning.
    std::optional<Picture> at(double sec) {
        if (!m_decoder)
            return {};
        const double tickSec = av_q2d(m_format->streams[0]->time_base);
        avformat_seek_file(m_format.get(), 0, INT64_MIN, static_cast<int64_t>(sec / tickSec),
                           static_cast<int64_t>(sec / tickSec), 0);
        avcodec_flush_buffers(m_decoder.get());
        const PacketPtr packet(av_packet_alloc());
        const FramePtr frame(av_frame_alloc());
        for (; av_read_frame(m_format.get(), packet.get()) >= 0; av_packet_unref(packet.get())) {
            if (packet->stream_index != 0)
                continue;
            avcodec_send_packet(m_decoder.get(), packet.get());
            while (avcodec_receive_frame(m_decoder.get(), frame.get()) >= 0) {
                const double shownSec = static_cast<double>(frame->pts) * tickSec;
                const auto clock = readPictureClock(
                    {frame->data[0], frame->width, frame->height, frame->linesize[0]});
                if (clock && shownSec > sec - 0.001)
                    return Picture{shownSec, static_cast<int64_t>(*clock)};
            }
        }
        return {};
    }

private:
    InputFormatPtr m_format;
    CodecContextPtr m_decoder;
};

}  // namespace orvelle::test
