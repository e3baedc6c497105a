#include "link/client/frame_queue.h"

#include <algorithm>
#include <utility>

namespace orvelle {

void FrameQueue::makeRoom(const LinkFrame& incoming) {
    if (m_kind == Kind::Audio) {
        for (; m_frames.size() >= m_bounds.audioFrames; m_frames.pop_front())
            m_bytes -= m_frames.front().data.size();
        return;
    }
    if (m_frames.size() < m_bounds.videoFrames &&
        m_bytes + incoming.data.size() <= m_bounds.videoBytes)
        return;
    m_frames.clear();
    m_bytes = 0;
    m_awaitsKey = true;
}

void FrameQueue::push(LinkFrame frame) {
    makeRoom(frame);
    if (m_awaitsKey && !frame.isKey())
        return;
    m_awaitsKey = false;
    m_bytes += frame.data.size();
    m_frames.push_back(std::move(frame));
}

FrameQueue::Next FrameQueue::pop(LinkFrame* frame, uint32_t* number) {
    if (m_incomplete > 0) {
        --m_incomplete;
        *number = m_expected;
        return Next::Incomplete;
    }
    if (m_frames.empty())
        return Next::Nothing;
    const uint32_t next = m_frames.front().number;
    if (m_hasExpected && next != m_expected) {
        *number = m_expected;
        // A camera that counts backwards has lost nothing, but its pictures do not follow either.
        m_lost += static_cast<uint32_t>(std::max(0, static_cast<int32_t>(next - m_expected)));
        m_expected = next;
        return Next::Gap;
    }
    *frame = std::move(m_frames.front());
    m_frames.pop_front();
    m_bytes -= frame->data.size();
    *number = next;
    m_expected = next + 1;
    m_hasExpected = true;
    return Next::Frame;
}

void FrameQueue::discard() {
    m_frames.clear();
    m_bytes = 0;
    m_incomplete = 0;
    m_awaitsKey = m_kind == Kind::Video;
    m_hasExpected = false;
}

}  // namespace orvelle
