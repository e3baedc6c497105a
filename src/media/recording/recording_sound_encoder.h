#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "frames/ffmpeg_ptr.h"
#include "media/stages/stream_parameters.h"

class KvAudioConverter;

namespace orvelle {

/// Turns sound that a container cannot hold into AAC, mono or stereo. Belongs to one thread.
///
/// Blocks of 1024 samples are cut regardless of the packets' borders. Their times follow the
/// number of samples, and are drawn to the packets' own times, so that a camera whose samples come
/// faster or slower than its clock says stays with the picture.
class RecordingSoundEncoder {
public:
    /// Takes a finished packet, whose times are in samples from the line's origin; those of the
    /// first one may be negative. A negative result ends the call.
    using Deliver = std::function<int(AVPacket&)>;

    RecordingSoundEncoder();
    ~RecordingSoundEncoder();

    /// Returns the parameters of the AAC track; empty when the sound cannot be decoded.
    StreamParameters open(const StreamParameters& source);
    bool isOpen() const { return m_converter != nullptr; }
    int sampleRate() const { return m_encoder->sample_rate; }

    /// `startSec` is where the packet begins. 0, or what `deliver` returned; damaged sound is left
    /// out.
    int push(const AVPacket& packet, double startSec, const Deliver& deliver);
    /// Gives out what waits, filled up with silence; nothing may follow.
    int drain(const Deliver& deliver);

private:
    bool openDecoder(const StreamParameters& source);
    bool openEncoder(const StreamParameters& source);
    bool makeBlock();
    void convert(const AVFrame& frame);
    void convertSilence();
    int encodeBlocks(int most, const Deliver& deliver);
    int encode(const AVFrame* block, const Deliver& deliver);
    bool readBlock();
    int64_t placeBlock();

    CodecContextPtr m_decoder;
    CodecContextPtr m_encoder;
    std::unique_ptr<KvAudioConverter> m_converter;  ///< holds the samples of no block yet
    FramePtr m_decoded;
    FramePtr m_block;
    PacketPtr m_packet;
    std::vector<float> m_packed;  ///< one block as the converter gives it

    double m_endSec = 0.0;      ///< of the newest sample, by the packets' times
    double m_waitingSec = 0.0;  ///< of the samples of no block yet
    double m_blockSec = 0.0;    ///< where the next block begins, by the number of samples
    int64_t m_blockTicks = -1;  ///< where the last block began; -1 before the first
};

}  // namespace orvelle
