#pragma once

#include <cmath>

namespace orvelle {

/// The stretch of a stream whose pictures build on one that is missing or broken, in the stream's
/// own time. A fresh picture ends it. A stream that has none is refreshed bit by bit instead, which
/// takes less than kMostSec: the span is over by then in any case. One thread.
class DamageSpan {
public:
    static constexpr double kMostSec = 3.0;

    /// Further damage within a span does not make it longer.
    void begin(double timeSec) {
        if (!m_isOpen)
            m_beganSec = timeSec;
        m_isOpen = true;
    }
    void end() { m_isOpen = false; }
    /// Whether a picture of this time belongs to it.
    bool covers(double timeSec) {
        if (m_isOpen && std::abs(timeSec - m_beganSec) >= kMostSec)
            end();
        return m_isOpen;
    }

private:
    bool m_isOpen = false;
    double m_beganSec = 0.0;
};

}  // namespace orvelle
