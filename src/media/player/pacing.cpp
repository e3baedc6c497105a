#include "media/player/pacing.h"

#include <algorithm>

namespace orvelle {

std::optional<int64_t> Pacing::holdUntil(double timeSec, int64_t nowUs) {
    const double previousSec = m_previousSec;
    m_previousSec = timeSec;
    if (m_baseSec < 0.0) {
        m_baseSec = timeSec;
        m_windowStartUs = nowUs;
    }
    // The first picture, and all of a source whose times stay 0.
    if (previousSec <= 0.0)
        return std::nullopt;

    const double aheadSec = timeSec - m_baseSec;
    const double behindSec = previousSec - timeSec;
    // Compared as doubles: what a broken clock gives need not fit an integer of microseconds.
    const double untilDueUs = static_cast<double>(m_startUs - nowUs) + aheadSec * 1e6;
    if (!(untilDueUs <= kMaxAheadUs) || behindSec * 1e6 > kMaxAheadUs) {
        rebase(timeSec, nowUs);
        return std::nullopt;
    }
    const int64_t holdUs = static_cast<int64_t>(std::max(untilDueUs, -1e15));
    const int64_t neededUs = holdUs - giveBackSkew(holdUs, nowUs);
    if (neededUs <= 0)
        return std::nullopt;
    return nowUs + neededUs;
}

void Pacing::rebase(double timeSec, int64_t nowUs) {
    m_startUs = nowUs;
    m_baseSec = timeSec;
    m_windowStartUs = nowUs;
    m_smallestHoldUs.reset();
}

int64_t Pacing::giveBackSkew(int64_t holdUs, int64_t nowUs) {
    m_smallestHoldUs = std::min(m_smallestHoldUs.value_or(holdUs), holdUs);
    if (nowUs - m_windowStartUs < kWindowUs)
        return 0;
    const int64_t skewUs = std::max<int64_t>(*m_smallestHoldUs, 0);
    m_startUs -= skewUs;
    m_windowStartUs = nowUs;
    m_smallestHoldUs.reset();
    return skewUs;
}

}  // namespace orvelle
