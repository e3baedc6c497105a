#pragma once

#include <cstdint>

#include "frames/ffmpeg_ptr.h"
#include "media/stages/stream_parameters.h"

namespace orvelle {

/// Takes the ADTS header off AAC frames, which containers keep once for the whole track. AAC
/// without such headers passes as it is. Belongs to one thread.
class AdtsFilter {
public:
    /// `sample` is one packet of the stream, from which the track's codec header is taken. Returns
    /// the track's parameters; empty when they cannot be told.
    StreamParameters open(const StreamParameters& source, const AVPacket& sample);
    bool isOpen() const { return m_filter != nullptr; }

    /// What the frame's ADTS header says of profile, rate and channels; 0 without such a header.
    /// Frames of one track agree in it.
    static uint32_t formatOf(const AVPacket& packet);

    /// Filters in place; false when the packet is no sound that the track can hold.
    bool apply(AVPacket& packet);

private:
    BitstreamFilterPtr m_filter;
};

}  // namespace orvelle
