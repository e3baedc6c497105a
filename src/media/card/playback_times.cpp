#include "media/card/playback_times.h"

#include <cmath>
#include <utility>

namespace orvelle {

namespace {

/// Rounding of stamps to milliseconds.
constexpr double kRoundingSec = 0.002;
/// From the moment asked for to the picture that a camera begins with, either way: a recording.
constexpr double kLongestLeadSec = 61.0;
/// After which sound goes its own way, since no picture reaches its stamp.
constexpr double kLongestHoldSec = 2.0;
constexpr size_t kMaxJumps = 256;

bool isStep(double seconds) {
    return seconds > 0.0 && seconds <= PlaybackTimes::kLongestStepSec + kRoundingSec;
}

}  // namespace

double PlaybackTimes::takePicture(double stampSec) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_hasPicture)
        begin(stampSec);
    else if (isStep(stampSec - m_stampSec))
        m_timeSec = stampSec + m_offsetSec;
    else
        skipTo(stampSec);
    m_stampSec = stampSec;
    passUpTo(stampSec);
    return m_timeSec;
}

void PlaybackTimes::begin(double stampSec) {
    m_hasPicture = true;
    m_isStampTrusted = m_askedSec && std::fabs(stampSec - *m_askedSec) <= kLongestLeadSec;
    if (!m_isStampTrusted)
        m_askedSec = stampSec;
    m_offsetSec = -*m_askedSec;
    m_timeSec = stampSec + m_offsetSec;
    for (HeldSound& sound : m_held)
        sound.sinceSec = m_timeSec;
}

void PlaybackTimes::skipTo(double stampSec) {
    const bool isAhead = stampSec > m_stampSec;
    if (isAhead)
        passUpTo(std::fmin(m_stampSec + kLongestStepSec, stampSec));
    m_timeSec += kUnknownStepSec;
    m_offsetSec = m_timeSec - stampSec;
    // Part of the recording is missing, and the position is behind it now.
    if (!isAhead || !m_isStampTrusted)
        return;
    m_jumps.push_back({m_timeSec, stampSec - *m_askedSec - m_timeSec});
    if (m_jumps.size() > kMaxJumps)
        m_jumps.pop_front();
}

bool PlaybackTimes::offer(std::unique_ptr<Packet> sound) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    // What has passed waits without an end while nothing is shown.
    if (m_held.size() + static_cast<size_t>(m_passed.size()) >= kMaxHeld)
        return false;
    m_held.push_back({std::move(sound), m_timeSec});
    if (m_hasPicture)
        passUpTo(m_stampSec);
    return true;
}

void PlaybackTimes::endPictures() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isOver = true;
    passUpTo(m_stampSec);
}

void PlaybackTimes::clear() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_held.clear();
}

// Sound overtakes pictures where both come faster than they play.
bool PlaybackTimes::isStale(const HeldSound& sound) const {
    return m_timeSec - sound.sinceSec > kLongestHoldSec &&
           sound.packet->time() - m_stampSec > kLongestLeadSec;
}

void PlaybackTimes::passUpTo(double stampSec) {
    while (!m_held.empty()) {
        HeldSound& sound = m_held.front();
        const double soundSec = sound.packet->time();
        const bool isDue = soundSec <= stampSec;
        if (!isDue && !isStale(sound) && !m_isOver)
            return;
        sound.packet->setTime(soundTime(soundSec, !isDue && isStale(sound)));
        m_passed.put(std::move(sound.packet));
        m_held.pop_front();
    }
}

double PlaybackTimes::soundTime(double stampSec, bool isStale) {
    const double stepSec = stampSec - m_soundStampSec.value_or(stampSec);
    const bool goesOn = m_soundStampSec && isStep(stepSec);
    if (!isStale)
        m_soundTimeSec = stampSec + m_offsetSec;
    else if (goesOn)
        m_soundTimeSec += stepSec;
    else
        m_soundTimeSec = m_timeSec;
    m_soundStampSec = stampSec;
    return m_soundTimeSec;
}

double PlaybackTimes::positionOf(double timeSec) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    double offsetSec = 0.0;
    for (const Jump& jump : m_jumps) {
        if (timeSec < jump.timeSec - kRoundingSec)
            break;
        offsetSec = jump.offsetSec;
    }
    return timeSec + offsetSec;
}

}  // namespace orvelle
