#include "link/server/send_cap.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr int64_t kMinStart = 8'000'000;
constexpr int64_t kFloor = 200'000;

constexpr double kBackOff = 0.8;           // of what got through when the path was full
constexpr double kDeepestCut = 0.5;        // one sample may mislead
constexpr int kHoldUpdates = 2;            // lets the path's own queue drain first
constexpr double kQueuedMs = 80;           // above the least round trip: a queue has built up
constexpr double kRoundTripDrift = 1.002;  // lets the least follow a path that grew longer
// A path without a queue of its own shows only by loss. Reordered datagrams are reported as
// lost too, so it takes many of them, and twice.
constexpr double kFullLossRatio = 0.35;
constexpr int kFullLossSamples = 2;

// Careful near the rate that was too much; bold once the path shows that it takes more.
constexpr double kCarefulGrowth = 1.04;
constexpr double kBoldGrowth = 1.15;
constexpr int kCarefulUpdates = 10;
constexpr double kSpotlessMs = 25;  // above the least round trip: no queue worth the name
constexpr double kUsedShare = 0.5;  // a cap that was not used proves nothing
// On a spotless path key frames may go out this much faster than the start.
constexpr int64_t kHeadRoom = 4;

double bitsPerSecondOf(int64_t bytes, const SendCap::Sample& sample) {
    return static_cast<double>(bytes) * 8000 / static_cast<double>(sample.elapsedMs);
}

}  // namespace

SendCap::SendCap(int64_t nominalBitsPerSecond)
    : m_start(std::max(kMinStart, 2 * nominalBitsPerSecond)), m_cap(m_start) {}

bool SendCap::isQueueing(const Sample& sample) {
    if (sample.ackedBytes == 0)
        return false;  // the round trip is an old one
    if (m_minRoundTripMs <= 0 || sample.roundTripMs < m_minRoundTripMs)
        m_minRoundTripMs = sample.roundTripMs;
    else
        m_minRoundTripMs *= kRoundTripDrift;
    return sample.roundTripMs > m_minRoundTripMs + kQueuedMs;
}

bool SendCap::isLosing(const Sample& sample) {
    const bool isMuch = static_cast<double>(sample.lostPackets) >
                        kFullLossRatio * static_cast<double>(sample.sentPackets);
    m_lossySamples = isMuch && sample.isBacklogged ? m_lossySamples + 1 : 0;
    return m_lossySamples >= kFullLossSamples;
}

// What was sent less the losses, but no more than was acknowledged, since the path's queue takes
// bytes in before it loses any.
double SendCap::deliveredRate(const Sample& sample) const {
    const double lostShare = static_cast<double>(sample.lostPackets) /
                             static_cast<double>(std::max<int64_t>(1, sample.sentPackets));
    return std::min(bitsPerSecondOf(sample.sentBytes, sample) * (1 - lostShare), m_ackedRate);
}

void SendCap::backOff(double factor) {
    const double cut = static_cast<double>(m_cap) * std::clamp(factor, kDeepestCut, 1.0);
    m_cap = std::max(kFloor, static_cast<int64_t>(cut));
    m_hold = kHoldUpdates;
    m_healthy = 0;
    m_lossySamples = 0;
}

void SendCap::grow(const Sample& sample) {
    const auto cap = static_cast<double>(m_cap);
    const bool isSpotless =
        sample.lostPackets == 0 && sample.roundTripMs < m_minRoundTripMs + kSpotlessMs;
    const bool isProven =
        sample.isBacklogged || bitsPerSecondOf(sample.sentBytes, sample) >= kUsedShare * cap;
    if (!isProven && !(isSpotless && m_cap >= m_start))
        return;
    const bool isBold = ++m_healthy > kCarefulUpdates || (isSpotless && sample.isBacklogged);
    const int64_t most = isSpotless ? kHeadRoom * m_start : m_start;
    m_cap = std::min(most, static_cast<int64_t>(cap * (isBold ? kBoldGrowth : kCarefulGrowth)));
}

int64_t SendCap::update(const Sample& sample) {
    if (sample.elapsedMs <= 0)
        return m_cap;
    m_ackedRate = (m_ackedRate + bitsPerSecondOf(sample.ackedBytes, sample)) / 2;
    const bool queueing = isQueueing(sample);
    const bool losing = isLosing(sample);
    if (m_hold > 0)
        --m_hold;
    else if ((queueing && sample.isBacklogged) || losing)
        backOff(kBackOff * deliveredRate(sample) / static_cast<double>(m_cap));
    else if (sample.ackedBytes > 0 && !queueing)
        grow(sample);
    return m_cap;
}

}  // namespace orvelle
