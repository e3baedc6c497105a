#pragma once

#include <QString>

#include <functional>
#include <vector>

#include "camera/encoding/video_encoder.h"
#include "camera/feed/encoded_frame.h"
#include "camera/feed/feed.h"
#include "frames/ffmpeg_io_ptr.h"

extern "C" {
#include <libavcodec/bsf.h>
}

namespace orvelle {

struct NormaliserConfig {
    AVCodecID codec = AV_CODEC_ID_H264;  ///< where encoding is needed
    int maxHeight = 1080;                ///< larger pictures are scaled down to it
    int64_t bitsPerSecond = 0;           ///< 0: by picture size
    bool isLive = false;                 ///< pictures that come late are not encoded
};

/// Makes a video stream fit for clients: H.264 and HEVC pass as Annex B with parameter sets
/// before every key frame; other codecs, streams with B frames or with frames above the link's
/// limit are encoded anew. A stream found unfit on its way is encoded from its current group of
/// pictures on. One thread.
class StreamNormaliser {
public:
    using Deliver = std::function<void(const EncodedFrame&)>;

    StreamNormaliser(NormaliserConfig config, Deliver deliver);

    /// Takes a new stream; empty on success, else one line of reason.
    QString open(const AVStream& stream);

    /// Times of `packet` are in microseconds of the camera clock. With `wanted` false nothing is
    /// decoded or encoded; passing goes on.
    void push(const AVPacket& packet, bool wanted, bool forceKey);

    bool isEncoding() const { return m_decoder != nullptr; }
    FeedFormat format() const { return m_format; }  ///< of what is emitted

private:
    QString openFilter();
    QString startEncoding(const char* reason);
    bool pass(const AVPacket& packet);
    EncodedFrame filteredFrame() const;
    void remember(const AVPacket& packet);
    void catchUp();
    void decode(const AVPacket& packet, bool isShown);
    void encodePicture(AVFrame* picture);
    AVFrame* fitted(AVFrame* picture);

    const NormaliserConfig m_config;
    const Deliver m_deliver;
    CodecParametersPtr m_parameters;
    FeedFormat m_format;

    BitstreamFilterPtr m_filter;  ///< passing
    PacketPtr m_filtered;
    std::vector<uint8_t> m_parameterSets;  ///< of the stream's header, Annex B

    std::vector<PacketPtr> m_group;  ///< from the last key frame on; empty when it grew too long
    size_t m_groupBytes = 0;
    int64_t m_lastTimeUs = AV_NOPTS_VALUE;

    CodecContextPtr m_decoder;  ///< encoding
    VideoEncoder m_encoder;
    FramePtr m_picture;
    FramePtr m_fittedPicture;
    ScalerPtr m_scaler;
    bool m_isDecoderCurrent = false;  ///< it got every packet of the group
    bool m_isKeyDue = false;
};

}  // namespace orvelle
