#include "system/event_loop_probe.h"

#include <algorithm>

namespace orvelle::test {

namespace {

constexpr int kTickMs = 5;

}  // namespace

EventLoopProbe::EventLoopProbe() {
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_worstMs = std::max(m_worstMs, delayMs());
        m_sinceTick.start();
    });
    m_sinceTick.start();
    m_timer.start(kTickMs);
}

double EventLoopProbe::worstDelayMs() const {
    // A call that still runs counts, too.
    return std::max(m_worstMs, delayMs());
}

double EventLoopProbe::delayMs() const {
    return static_cast<double>(m_sinceTick.nsecsElapsed()) * 1e-6 - kTickMs;
}

}  // namespace orvelle::test
