#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "frames/ffmpeg_ptr.h"

namespace orvelle {

/// What a decoder knows of one stream, as a copy that belongs to whoever holds it.
struct StreamParameters {
    CodecParametersPtr codec;      ///< null while nothing is known
    AVRational timeBase = {0, 1};  ///< the decoder's own; often unset

    explicit operator bool() const { return codec != nullptr; }
    StreamParameters copy() const;  ///< empty when out of memory
};

bool hasExtradata(const AVCodecParameters& codec, const std::vector<uint8_t>& bytes);

/// The parameters that a decoding thread publishes for others to copy. Any thread.
class PublishedParameters {
public:
    /// Replaces what was published by the context's present state; `extradata` may be empty.
    void publish(const AVCodecContext& context, const std::vector<uint8_t>& extradata = {});
    void clear();
    StreamParameters copy() const;

private:
    mutable std::mutex m_mutex;  ///< guards everything below
    StreamParameters m_parameters;
};

}  // namespace orvelle
