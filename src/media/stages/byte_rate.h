#pragma once

#include <atomic>
#include <cstdint>

namespace orvelle {

/// Smoothed rate of received bytes: each second half of the former rate and half of the new.
/// Several threads add, one updates, any reads; times are a monotonic clock's.
class ByteRate {
public:
    static constexpr int64_t kIntervalUs = 1'000'000;
    /// Without an update for this long nothing flows, so the rate reads 0.
    static constexpr int64_t kStaleUs = 3 * kIntervalUs;

    void restart(int64_t nowUs);
    void add(int bytes) { m_bytes += bytes; }
    void update(int64_t nowUs);
    int bytesPerSecond(int64_t nowUs) const;

private:
    std::atomic<int64_t> m_bytes{0};  ///< since the last update; the three order nothing
    std::atomic<int> m_rate{0};
    std::atomic<int64_t> m_updatedUs{0};
};

}  // namespace orvelle
