#pragma once

#include <cstdint>
#include <mutex>
#include <utility>

namespace orvelle {

/// The motor of a pan-tilt camera: turns while a command holds it, up to its limits.
///
/// Position is derived from the clock, so no thread moves it. It belongs to the client that
/// commanded last and stops when that client goes, so a lost stop never leaves it turning.
/// Any thread.
class PanTilt {
public:
    /// A client of a camera: the camera's address and the client's id.
    using Owner = std::pair<const void*, int>;

    struct Position {
        double pan = 0.5;   ///< 0 leftmost to 1 rightmost
        double tilt = 0.5;  ///< 0 uppermost to 1 lowermost
    };

    /// Movement code 0 (stop) to 8; others stop. `speed` 1 crosses the range in 8 s.
    void command(const Owner& owner, uint8_t control, uint8_t speed, int64_t nowUs);
    /// Stops when `owner` is the one that set it moving.
    void release(const Owner& owner, int64_t nowUs);
    Position position(int64_t nowUs) const;

private:
    Position positionLocked(int64_t nowUs) const;

    mutable std::mutex m_mutex;  ///< guards everything below
    Position m_start;            ///< at m_sinceUs
    double m_panPerSecond = 0.0;
    double m_tiltPerSecond = 0.0;
    int64_t m_sinceUs = 0;
    Owner m_owner = {nullptr, 0};
};

}  // namespace orvelle
