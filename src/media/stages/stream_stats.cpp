#include "media/stages/stream_stats.h"

#include <algorithm>

namespace orvelle {

void StreamStats::noteArrival(double timeSec, int64_t nowUs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_arrivals[m_next] = {timeSec, nowUs};
    m_next = (m_next + 1) % kArrivals;
}

void StreamStats::noteShown(double timeSec, int64_t nowUs) {
    picturesShown.fetch_add(1, std::memory_order_relaxed);
    std::lock_guard<std::mutex> lock(m_mutex);
    // The stamp travels unchanged from packet to picture, so it compares equal.
    for (size_t back = 1; back <= kArrivals; ++back) {
        const Arrival& arrival = m_arrivals[(m_next + kArrivals - back) % kArrivals];
        if (arrival.timeSec != timeSec)
            continue;
        m_delayUs = nowUs - arrival.atUs;
        m_maxDelayUs = std::max(m_maxDelayUs, m_delayUs);
        return;
    }
}

StreamStatsSnapshot StreamStats::snapshot() const {
    StreamStatsSnapshot copy;
    copy.videoFramesReceived = videoFramesReceived;
    copy.videoFramesLost = videoFramesLost;
    copy.videoFramesDropped = videoFramesDropped;
    copy.audioFramesReceived = audioFramesReceived;
    copy.audioFramesDropped = audioFramesDropped;
    copy.picturesDecoded = picturesDecoded;
    copy.decodeErrors = decodeErrors;
    copy.picturesShown = picturesShown;
    copy.bytesReceived = bytesReceived;
    copy.holdUs = holdUs;
    std::lock_guard<std::mutex> lock(m_mutex);
    copy.delayUs = m_delayUs;
    copy.maxDelayUs = m_maxDelayUs;
    return copy;
}

}  // namespace orvelle
