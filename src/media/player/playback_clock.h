#pragma once

#include <cstdint>
#include <mutex>
#include <optional>

namespace orvelle {

/// When the pictures and the sound of a recording are due: one clock for both, so that they stay
/// together. It starts with the first picture, stands while there is none to show, and is set back
/// by a picture that comes late, so that what follows goes on at its own pace.
///
/// Times of this machine come from the caller, on a monotonic clock. Any thread.
class PlaybackClock {
public:
    /// What the first picture stands longer, at the start and after a stall, so that the sound
    /// device is filled by the time that the next one is due; more than a frame.
    static constexpr int64_t kHeadStartUs = 150'000;
    /// Later than this, the clock is set back.
    static constexpr int64_t kMaxLateUs = 100'000;
    /// Times further apart than this make no sense; the clock is set by the later one.
    static constexpr int64_t kMaxAheadUs = 2'500'000;

    /// When the picture, which is there now, is to be shown; not before `nowUs`.
    int64_t showAt(double timeSec, int64_t nowUs);
    /// When sound of that time is due; nothing while the clock does not run.
    std::optional<int64_t> soundAt(double timeSec) const;
    /// There is no picture to show: the clock stands until there is one.
    void stall();

private:
    int64_t dueUs(double timeSec) const;
    void set(double timeSec, int64_t nowUs);

    mutable std::mutex m_mutex;  ///< guards what follows
    bool m_isRunning = false;
    double m_baseSec = 0.0;
    int64_t m_baseUs = 0;  ///< when a picture of time m_baseSec is due
};

}  // namespace orvelle
