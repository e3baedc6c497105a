#include "camera/demo/pan_tilt.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr double kRangesPerSecond = 1.0 / 8.0;
constexpr int kMaxSpeed = 8;

struct Direction {
    int pan;   ///< -1 left, 1 right
    int tilt;  ///< -1 up, 1 down
};

// By movement code: stop, up, down, left, up-left, down-left, right, up-right, down-right.
constexpr Direction kDirections[] = {
    {0, 0}, {0, -1}, {0, 1}, {-1, 0}, {-1, -1}, {-1, 1}, {1, 0}, {1, -1}, {1, 1},
};

Direction directionOf(uint8_t control) {
    return control < std::size(kDirections) ? kDirections[control] : kDirections[0];
}

}  // namespace

void PanTilt::command(const Owner& owner, uint8_t control, uint8_t speed, int64_t nowUs) {
    const Direction direction = directionOf(control);
    const double rate = kRangesPerSecond * std::clamp<int>(speed, 1, kMaxSpeed);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_start = positionLocked(nowUs);
    m_sinceUs = nowUs;
    m_panPerSecond = direction.pan * rate;
    m_tiltPerSecond = direction.tilt * rate;
    m_owner = owner;
}

void PanTilt::release(const Owner& owner, int64_t nowUs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_owner != owner)
        return;
    m_start = positionLocked(nowUs);
    m_sinceUs = nowUs;
    m_panPerSecond = m_tiltPerSecond = 0.0;
    m_owner = {};
}

PanTilt::Position PanTilt::position(int64_t nowUs) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return positionLocked(nowUs);
}

PanTilt::Position PanTilt::positionLocked(int64_t nowUs) const {
    const double seconds = static_cast<double>(nowUs - m_sinceUs) / 1e6;
    return {std::clamp(m_start.pan + m_panPerSecond * seconds, 0.0, 1.0),
            std::clamp(m_start.tilt + m_tiltPerSecond * seconds, 0.0, 1.0)};
}

}  // namespace orvelle
