#include "media/recording/recording_clock.h"

namespace orvelle {

namespace {

/// Further apart than this, the tracks have clocks of their own.
constexpr double kMaxApartSec = 1.0;

}  // namespace

void RecordingClock::start(double cameraSec, double lineSec) {
    m_isStarted = true;
    m_cameraSec = cameraSec;
    m_lineSec = lineSec;
    m_originSec = cameraSec - lineSec;
}

double RecordingClock::place(double cameraSec, const RecordingClock& other) {
    const double step = cameraSec - m_cameraSec;
    if (step < 0.0 || step > kLongestStepSec)
        m_originSec = originAfterSetting(cameraSec, other);
    else if (step > 0.0)
        m_stepSec = step;
    m_cameraSec = cameraSec;
    // From the origin rather than step by step, so that roundings do not add up.
    m_lineSec = cameraSec - m_originSec;
    return m_lineSec;
}

double RecordingClock::originAfterSetting(double cameraSec, const RecordingClock& other) const {
    const double aheadSec = cameraSec - other.m_originSec - m_lineSec;
    const bool hasFollowed = other.m_isStarted && aheadSec >= 0.0 && aheadSec < kMaxApartSec;
    return hasFollowed ? other.m_originSec : cameraSec - (m_lineSec + m_stepSec);
}

}  // namespace orvelle
