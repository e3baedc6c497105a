#pragma once

#include <deque>
#include <optional>

#include "camera/feed/encoded_frame.h"
#include "camera/feed/feed.h"
#include "frames/ffmpeg_ptr.h"

namespace orvelle {

/// H.264 or HEVC for live viewing: one packet out for each picture in, no B frames, a key frame
/// with its parameter sets every two seconds and on request, no frame above the link's limit. One
/// thread.
class VideoEncoder {
public:
    VideoEncoder();

    /// Empty on success, else one line of reason. May be called again with another format.
    QString open(AVCodecID codec, const FeedFormat& format);
    bool isOpen() const { return m_context != nullptr; }

    /// `picture` is planar 4:2:0 of the opened size. Nothing when the encoder failed, or when
    /// the frame came out too large; the next one is then a key frame at a lower rate.
    std::optional<EncodedFrame> encode(AVFrame* picture, int64_t timeUs, bool forceKey);

    const FeedFormat& format() const { return m_format; }

private:
    std::optional<EncodedFrame> takePacket();
    void lowerRate();

    CodecContextPtr m_context;
    PacketPtr m_packet;
    FeedFormat m_format;
    std::deque<int64_t> m_times;  ///< of the pictures that are inside the encoder
    int64_t m_pictureCount = 0;
};

}  // namespace orvelle
