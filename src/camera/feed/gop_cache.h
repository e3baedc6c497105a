#pragma once

#include <vector>

#include "camera/feed/encoded_frame.h"

namespace orvelle {

/// The group of pictures that is being sent: from the last key frame on, so that a viewer of a
/// stream whose key frames cannot be forced sees a picture at once.
///
/// Bounded: a group that outgrows what a client takes in one burst is given up until the next
/// key frame. Not locked.
class GopCache {
public:
    static constexpr size_t kMaxFrames = 75;  ///< a client flushes a backlog above 90
    static constexpr size_t kMaxBytes = 2 * 1024 * 1024;

    void add(const EncodedFrame& frame);
    void clear();
    /// The cached frames with their times squeezed to 1 ms steps that end at the last frame's
    /// own time: the client, which paces by time stamps, catches up at once.
    std::vector<EncodedFrame> squeezed() const;

private:
    std::vector<EncodedFrame> m_frames;
    size_t m_bytes = 0;
};

}  // namespace orvelle
