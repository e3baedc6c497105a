#pragma once

#include <cstdint>
#include <optional>

namespace orvelle {

/// Decides how long the picture thread holds the next picture back, from the pictures' own times.
///
/// The first picture fixes where the camera's clock stands; a later one is due when this
/// machine's clock has advanced as far as the camera's has. A late picture is never held, an
/// early one holds the next.
///
/// Two clocks never run at quite the same rate: every hold that all pictures of a window needed is
/// delay that the skew has piled up, and is given back. For live sources; a recording has its
/// PlaybackClock.
///
/// Knows no clock and no thread: times come from the caller, on a monotonic clock.
class Pacing {
public:
    /// A due time further ahead than this means that the camera's clock jumped.
    static constexpr int64_t kMaxAheadUs = 1'000'000;
    static constexpr int64_t kWindowUs = 2'000'000;

    explicit Pacing(int64_t startUs) : m_startUs(startUs) {}

    /// Told of each picture as it is shown; the time up to which the next one has to wait, or
    /// nothing when it need not.
    std::optional<int64_t> holdUntil(double timeSec, int64_t nowUs);

private:
    void rebase(double timeSec, int64_t nowUs);
    /// By how much the due times were moved back.
    int64_t giveBackSkew(int64_t holdUs, int64_t nowUs);

    int64_t m_startUs;  ///< this machine's time at which a picture of time m_baseSec is due
    double m_baseSec = -1.0;
    double m_previousSec = -1.0;
    int64_t m_windowStartUs = 0;
    std::optional<int64_t> m_smallestHoldUs;  ///< of the window's pictures; nothing yet: none
};

}  // namespace orvelle
