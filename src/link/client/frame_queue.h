#pragma once

#include "link/wire/frame_assembler.h"

#include <deque>

namespace orvelle {

/// Whole frames of one kind on their way to the reader, bounded in number and bytes, with the
/// gaps in their numbers found as they leave. Not locked: the channel's mutex guards it.
class FrameQueue {
public:
    enum class Kind {
        Video,  ///< an overflow forgets all and goes on at the next key frame
        Audio,  ///< an overflow forgets the oldest
    };
    enum class Next { Nothing, Frame, Gap, Incomplete };

    /// How much may wait for the reader.
    struct Bounds {
        size_t videoFrames;
        size_t videoBytes;
        size_t audioFrames;
    };
    /// Of a live picture, whose reader normally leaves nothing waiting: eight seconds at 15
    /// pictures a second, yet no more than a dozen of the largest.
    static constexpr Bounds kLive = {120, 3 * 1024 * 1024, 64};
    /// Of a recording, which comes as fast as the path takes it: more than its reader ever allows
    /// the camera to send ahead.
    static constexpr Bounds kRecording = {2048, 16 * 1024 * 1024, 2048};

    explicit FrameQueue(Kind kind, const Bounds& bounds = kLive) : m_kind(kind), m_bounds(bounds) {}

    void push(LinkFrame frame);
    /// A frame was given up half-way; its number shows as a gap as well.
    void noteIncomplete() { ++m_incomplete; }

    /// Frame: `*frame` was taken. Gap: frames are missing, told once; `*number` is the first.
    Next pop(LinkFrame* frame, uint32_t* number);
    /// Forgets all; neither a gap nor a loss for the reader.
    void discard();

    int size() const { return static_cast<int>(m_frames.size()); }
    bool hasSomething() const { return m_incomplete > 0 || !m_frames.empty(); }
    uint32_t lost() const { return m_lost; }

private:
    void makeRoom(const LinkFrame& incoming);

    const Kind m_kind;
    const Bounds m_bounds;
    std::deque<LinkFrame> m_frames;
    size_t m_bytes = 0;
    bool m_awaitsKey = false;
    bool m_hasExpected = false;  ///< m_expected means something
    uint32_t m_expected = 0;     ///< number of the next frame if none is missing
    uint32_t m_incomplete = 0;
    uint32_t m_lost = 0;
};

}  // namespace orvelle
