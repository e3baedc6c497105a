#include "link/server/send_cap.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr int64_t kLeastStart = 8'000'000;
constexpr int64_t kFloor = 200'000;
constexpr double kBackOff = 0.85;         // of what got through while the path was full
constexpr double kGrowth = 1.08;          // an update
constexpr int kHoldUpdates = 2;           // lets the path's own queue drain first
constexpr double kQueuedMs = 120;         // above the least round trip: a queue has built up
constexpr double kFullLossRatio = 0.2;    // no radio path in use loses that much
constexpr double kRoundTripDrift = 1.01;  // lets the least follow a path that grew longer

}  // namespace

SendCap::SendCap(int64_t nominalBitsPerSecond)
    : m_start(std::max(kLeastStart, 2 * nominalBitsPerSecond)), m_cap(m_start) {}

bool SendCap::isPathFull(const Sample& sample) {
    if (m_leastRoundTripMs <= 0 || sample.roundTripMs < m_leastRoundTripMs)
        m_leastRoundTripMs = sample.roundTripMs;
    else
        m_leastRoundTripMs *= kRoundTripDrift;
    const bool isQueued = sample.roundTripMs > m_leastRoundTripMs + kQueuedMs;
    const bool isLosing = static_cast<double>(sample.lostPackets) >
                          kFullLossRatio * static_cast<double>(sample.sentPackets);
    return isQueued || (isLosing && sample.sentPackets > 0);
}

int64_t SendCap::update(const Sample& sample) {
    if (sample.elapsedMs <= 0)
        return m_cap;
    if (isPathFull(sample) && sample.isBacklogged) {
        const auto delivered = static_cast<double>(sample.ackedBytes * 8000 / sample.elapsedMs);
        const auto wanted = static_cast<int64_t>(delivered * kBackOff);
        m_cap = std::max(kFloor, std::min(m_cap, wanted));
        m_hold = kHoldUpdates;
    } else if (m_hold > 0) {
        --m_hold;
    } else {
        m_cap = std::min(m_start, static_cast<int64_t>(static_cast<double>(m_cap) * kGrowth));
    }
    return m_cap;
}

}  // namespace orvelle
