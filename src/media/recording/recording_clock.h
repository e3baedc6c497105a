#pragma once

namespace orvelle {

/// Places one track's camera times on a recording's time line, in seconds from its origin.
///
/// A camera clock that is set back, or far ahead, is followed on the spot: the line goes on by
/// the step before, so that a file's times only rise and hold no gap that nobody saw. The track
/// that meets the new time second goes along with the first, so that they stay in step.
class RecordingClock {
public:
    /// Larger steps are a clock that was set: the link gives a silent camera up before.
    static constexpr double kLongestStepSec = 10.0;

    /// Puts `cameraSec` at `lineSec`.
    void start(double cameraSec, double lineSec);
    bool isStarted() const { return m_isStarted; }
    /// The place of the next packet, not below that of the last one. `other` is the other track's.
    double place(double cameraSec, const RecordingClock& other);

    double cameraSec() const { return m_cameraSec; }  ///< of the last packet, as the one below
    double lineSec() const { return m_lineSec; }
    double originSec() const { return m_originSec; }  ///< the camera time that stands at 0 now

private:
    double originAfterSetting(double cameraSec, const RecordingClock& other) const;

    bool m_isStarted = false;
    double m_cameraSec = 0.0;
    double m_lineSec = 0.0;
    double m_stepSec = 0.04;
    double m_originSec = 0.0;
};

}  // namespace orvelle
