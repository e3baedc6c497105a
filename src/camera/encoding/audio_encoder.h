#pragma once

#include <QString>

#include <functional>
#include <optional>
#include <vector>

#include "camera/encoding/adts.h"
#include "camera/feed/encoded_frame.h"
#include "frames/ffmpeg_ptr.h"

namespace orvelle {

/// Mono sound as clients take it: AAC at 16 kHz as ADTS frames, or A-law at 8 kHz in blocks of
/// 40 ms; every frame within kMaxAudioFrameBytes. One thread.
class AudioEncoder {
public:
    using Deliver = std::function<void(const EncodedFrame&)>;

    /// `codec` is AAC or PCM_ALAW. Empty on success, else one line of reason.
    QString open(AVCodecID codec);
    bool isOpen() const { return m_context != nullptr; }

    int sampleRate() const;
    int samplesPerFrame() const { return m_samplesPerFrame; }

    /// Appends mono samples of full scale +-1 whose first one was taken at `timeUs`, or that
    /// follow those before (AV_NOPTS_VALUE: so do all but the first block of a packet); hands over
    /// each frame that became complete.
    void encode(const float* samples, int count, int64_t timeUs, const Deliver& deliver);

private:
    bool makeBlock();
    int64_t durationUs(size_t samples) const;
    void encodeBlock(const Deliver& deliver);
    void deliverPacket(const Deliver& deliver);

    CodecContextPtr m_context;
    std::optional<AdtsFormat> m_adts;  ///< AAC
    FramePtr m_block;
    PacketPtr m_packet;
    int m_samplesPerFrame = 0;
    std::vector<float> m_pending;  ///< less than one frame
    int64_t m_pendingTimeUs = 0;   ///< of the first pending sample
};

}  // namespace orvelle
