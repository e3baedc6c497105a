#pragma once

#include <QString>

#include <functional>
#include <optional>
#include <vector>

#include "camera/encoding/adts.h"
#include "camera/encoding/audio_encoder.h"
#include "camera/feed/encoded_frame.h"
#include "frames/ffmpeg_io_ptr.h"

namespace orvelle {

/// Makes a sound stream fit for clients: AAC passes as ADTS where that is asked for, as long as
/// every frame fits the link; anything else is encoded anew. One thread.
class SoundNormaliser {
public:
    using Deliver = std::function<void(const EncodedFrame&)>;

    /// `codec` is AAC, PCM_ALAW, or NONE to drop all sound.
    SoundNormaliser(AVCodecID codec, Deliver deliver);

    /// Takes a new stream; empty on success, else one line of reason.
    QString open(const AVStream& stream);
    /// Times of `packet` are in microseconds of the camera clock. Does nothing unless `wanted`.
    void push(const AVPacket& packet, bool wanted);
    bool isEncoding() const { return m_decoder != nullptr; }

private:
    QString startEncoding(const char* reason);
    bool pass(const AVPacket& packet);
    void decode(const AVPacket& packet);
    void encodeBlock(AVFrame& block);
    bool openResampler(AVFrame& block);

    const AVCodecID m_codec;
    const Deliver m_deliver;
    CodecParametersPtr m_parameters;
    std::optional<AdtsFormat> m_adts;  ///< of raw AAC that passes
    bool m_isPassing = false;
    CodecContextPtr m_decoder;  ///< encoding
    AudioEncoder m_encoder;
    FramePtr m_block;
    ResamplerPtr m_resampler;
    int m_resamplerRate = 0;  ///< what the resampler was opened for
    int m_resamplerFormat = 0;
    int m_resamplerChannels = 0;
    std::vector<float> m_samples;
};

}  // namespace orvelle
