#pragma once

#include <mutex>

#include "frames/ffmpeg_ptr.h"

namespace orvelle {

/// What a decoder knows of one stream, as a copy that belongs to whoever holds it.
struct StreamParameters {
    CodecParametersPtr codec;      ///< null while nothing is known
    AVRational timeBase = {0, 1};  ///< the decoder's own; often unset

    explicit operator bool() const { return codec != nullptr; }
};

/// The parameters that a decoding thread publishes for others to copy. Any thread.
class PublishedParameters {
public:
    /// Replaces what was published by the context's present state. `extradata` (`size` bytes, may
    /// be 0: then that of the same codec's last publication stays) are the parameter sets.
    void publish(const AVCodecContext& context, const uint8_t* extradata, size_t size);
    void clear();
    StreamParameters copy() const;

private:
    mutable std::mutex m_mutex;  ///< guards everything below
    StreamParameters m_parameters;
};

}  // namespace orvelle
