#include "media/recording_clock.h"

namespace orvelle {

void RecordingClock::start(double cameraSec, double lineSec) {
    m_isStarted = true;
    m_cameraSec = cameraSec;
    m_lineSec = lineSec;
    m_originSec = cameraSec - lineSec;
}

double RecordingClock::place(double cameraSec) {
    const double step = cameraSec - m_cameraSec;
    if (step < 0.0 || step > kLongestStepSec)
        m_originSec = cameraSec - (m_lineSec + m_stepSec);
    else if (step > 0.0)
        m_stepSec = step;
    m_cameraSec = cameraSec;
    // From the origin rather than step by step, so that roundings do not add up.
    m_lineSec = cameraSec - m_originSec;
    return m_lineSec;
}

}  // namespace orvelle
