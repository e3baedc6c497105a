#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

namespace orvelle {

/// What a player has done since it was last started; a plain copy for logs and overlays.
struct StreamStatsSnapshot {
    uint64_t videoFramesReceived = 0;
    uint64_t videoFramesLost = 0;     ///< missing on the way or dropped by the camera
    uint64_t videoFramesDropped = 0;  ///< received, then thrown away before the decoder
    uint64_t audioFramesReceived = 0;
    uint64_t audioFramesDropped = 0;
    uint64_t picturesDecoded = 0;
    uint64_t decodeErrors = 0;
    uint64_t picturesShown = 0;
    uint64_t bytesReceived = 0;
    int64_t delayUs = -1;     ///< of the last picture, from its last byte to the view; -1 unknown
    int64_t maxDelayUs = -1;  ///< the largest of these
    int64_t holdUs = 0;       ///< how long pacing last held the picture thread back
};

/// The counters of one player, shared by its stages. Each is written by one stage and may be
/// read by any thread; the counters order nothing.
class StreamStats {
public:
    std::atomic<uint64_t> videoFramesReceived{0};
    std::atomic<uint64_t> videoFramesLost{0};
    std::atomic<uint64_t> videoFramesDropped{0};
    std::atomic<uint64_t> audioFramesReceived{0};
    std::atomic<uint64_t> audioFramesDropped{0};
    std::atomic<uint64_t> picturesDecoded{0};
    std::atomic<uint64_t> decodeErrors{0};
    std::atomic<uint64_t> picturesShown{0};
    std::atomic<uint64_t> bytesReceived{0};
    std::atomic<int64_t> holdUs{0};

    /// The input's and the output's ends of the delay measurement; a picture is known by its
    /// time stamp. `nowUs` is a monotonic clock's.
    void noteArrival(double timeSec, int64_t nowUs);
    void noteShown(double timeSec, int64_t nowUs);

    StreamStatsSnapshot snapshot() const;

private:
    struct Arrival {
        double timeSec = -1.0;
        int64_t atUs = 0;
    };
    /// More than the pictures that the queues between input and output can hold.
    static constexpr size_t kArrivals = 128;

    mutable std::mutex m_mutex;  ///< guards everything below
    std::array<Arrival, kArrivals> m_arrivals;
    size_t m_next = 0;
    int64_t m_delayUs = -1;
    int64_t m_maxDelayUs = -1;
};

/// What every stage has: the counters of its player, or its own until a player lends them.
class StatsHolder {
public:
    /// Before the stage is started.
    void setStats(std::shared_ptr<StreamStats> stats) { m_stats = std::move(stats); }
    StreamStats& stats() const { return *m_stats; }

protected:
    ~StatsHolder() = default;

private:
    std::shared_ptr<StreamStats> m_stats = std::make_shared<StreamStats>();
};

}  // namespace orvelle
