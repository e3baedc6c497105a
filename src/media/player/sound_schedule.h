#pragma once

#include <cstdint>
#include <optional>

namespace orvelle {

/// Keeps the sound that goes into a device in step with a clock: tells how much silence has to go
/// before a frame, or that a frame comes too late.
///
/// A device begins to play as soon as it is fed and goes on without a break while it is; so what
/// is written next will be heard when all before it has been, whatever the device holds. A write
/// blocks while the device is full, and how far that point moves over time tells by how much the
/// device's clock differs from the machine's.
///
/// One thread; times come from the caller, on a monotonic clock.
class SoundSchedule {
public:
    /// Below this, sound counts as in step: a correction can be heard.
    static constexpr int64_t kToleranceUs = 30'000;

    struct Plan {
        int64_t silenceUs = 0;
        bool isLate = false;  ///< the frame is to be left out
    };
    /// For a frame that is due then and lasts so long.
    Plan plan(int64_t dueUs, int64_t frameUs, int64_t nowUs);
    /// So much was written by a write that began and returned then.
    void wrote(int64_t us, int64_t fromUs, int64_t nowUs);
    /// The device begins anew with the next write.
    void restart();

private:
    void follow(int64_t nowUs);

    std::optional<int64_t> m_endUs;  ///< when what was written has been heard; none: nothing plays
    int64_t m_startedUs = 0;
    double m_heldUs = 0.0;  ///< what the device holds when a write returns, smoothed
    std::optional<double> m_usuallyHeldUs;  ///< the same, soon after the start
};

}  // namespace orvelle
