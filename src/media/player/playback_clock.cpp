#include "media/player/playback_clock.h"

#include <algorithm>
#include <cmath>

namespace orvelle {

int64_t PlaybackClock::showAt(double timeSec, int64_t nowUs) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const int64_t aheadUs = m_isRunning ? dueUs(timeSec) - nowUs : 0;
    if (!m_isRunning || aheadUs < -kMaxLateUs || aheadUs > kMaxAheadUs) {
        set(timeSec, nowUs);
        return nowUs;
    }
    return nowUs + std::max<int64_t>(aheadUs, 0);
}

std::optional<int64_t> PlaybackClock::soundAt(double timeSec) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isRunning ? std::optional(dueUs(timeSec)) : std::nullopt;
}

void PlaybackClock::stall() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isRunning = false;
}

int64_t PlaybackClock::dueUs(double timeSec) const {
    // What a broken file tells need not fit an integer of microseconds.
    constexpr double kFarUs = 1e15;
    return m_baseUs + std::llround(std::clamp((timeSec - m_baseSec) * 1e6, -kFarUs, kFarUs));
}

void PlaybackClock::set(double timeSec, int64_t nowUs) {
    m_isRunning = true;
    m_baseSec = timeSec;
    m_baseUs = nowUs + kHeadStartUs;
}

}  // namespace orvelle
