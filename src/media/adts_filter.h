#pragma once

#include "frames/ffmpeg_ptr.h"
#include "media/stream_parameters.h"

namespace orvelle {

/// Takes the ADTS header off AAC frames, which containers keep once for the whole track. AAC
/// without such headers passes as it is. Belongs to one thread.
class AdtsFilter {
public:
    /// `sample` is one packet of the stream, from which the track's codec header is taken. Returns
    /// the track's parameters; empty when they cannot be told.
    StreamParameters open(const StreamParameters& source, const AVPacket& sample);
    bool isOpen() const { return m_filter != nullptr; }

    /// Filters in place; false when the packet is no sound that the track can hold.
    bool apply(AVPacket& packet);

private:
    BitstreamFilterPtr m_filter;
};

}  // namespace orvelle
