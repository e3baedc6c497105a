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

    explicit FrameQueue(Kind kind) : m_kind(kind) {}

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
    std::deque<LinkFrame> m_frames;
    size_t m_bytes = 0;
    bool m_awaitsKey = false;
    bool m_hasExpected = false;  ///< m_expected means something
    uint32_t m_expected = 0;     ///< number of the next frame if none is missing
    uint32_t m_incomplete = 0;
    uint32_t m_lost = 0;
};

}  // namespace orvelle
