#pragma once

#include <cstdint>

namespace orvelle {

/// Finds the rate at which a channel may send. The transport has no congestion control of its
/// own in live mode, and only a cap below the path's rate lets the dropping of old pictures
/// bound the delay. Pure: the caller measures and applies.
class SendCap {
public:
    /// What was seen since the last update.
    struct Sample {
        int64_t elapsedMs = 0;
        int64_t sentBytes = 0;    ///< with repetitions
        int64_t sentPackets = 0;  ///< the same
        int64_t lostPackets = 0;  ///< as the peer reported
        double roundTripMs = 0;
        int64_t ackedBytes = 0;     ///< new ones, without repetitions
        bool isBacklogged = false;  ///< there was always something left to send
    };

    explicit SendCap(int64_t nominalBitsPerSecond);

    /// Bits per second from now on.
    int64_t update(const Sample& sample);
    int64_t bitsPerSecond() const { return m_cap; }

private:
    bool isQueueing(const Sample& sample);
    bool isLosing(const Sample& sample);
    double deliveredRate(const Sample& sample) const;
    void backOff(double factor);
    void grow(const Sample& sample);

    const int64_t m_start;
    int64_t m_cap;
    double m_minRoundTripMs = 0;
    double m_ackedRate = 0;  ///< bits per second, smoothed since repairs come in bursts
    int m_hold = 0;          ///< updates until the cap may grow again
    int m_lossySamples = 0;  ///< in a row
    int m_healthy = 0;       ///< updates in a row that let it grow
};

}  // namespace orvelle
