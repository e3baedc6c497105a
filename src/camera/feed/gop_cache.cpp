#include "camera/feed/gop_cache.h"

namespace orvelle {

void GopCache::add(const EncodedFrame& frame) {
    if (frame.isKey)
        clear();
    else if (m_frames.empty())
        return;
    m_bytes += frame.bytes->size();
    m_frames.push_back(frame);
    if (m_frames.size() > kMaxFrames || m_bytes > kMaxBytes)
        clear();
}

void GopCache::clear() {
    m_frames.clear();
    m_bytes = 0;
}

std::vector<EncodedFrame> GopCache::squeezed() const {
    std::vector<EncodedFrame> frames = m_frames;
    int64_t timeUs = frames.empty() ? 0 : frames.back().timeUs;
    for (auto frame = frames.rbegin(); frame != frames.rend(); ++frame) {
        frame->timeUs = timeUs;
        timeUs -= 1000;
    }
    return frames;
}

}  // namespace orvelle
