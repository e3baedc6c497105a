#include "ui/playback/moment_choice.h"

#include <utility>

namespace orvelle {

bool ClickGuard::accepts(qint64 now) {
    if (remaining(now) > 0)
        return false;
    m_last = now;
    return true;
}

qint64 ClickGuard::remaining(qint64 now) const {
    return m_last < 0 ? 0 : qMax<qint64>(0, m_last + kIntervalMs - now);
}

MomentChoice::MomentChoice(std::function<qint64()> clock) : m_clock(std::move(clock)) {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] { emit due(m_time); });
}

bool MomentChoice::acceptClick() {
    if (!m_guard.accepts(m_clock()))
        return false;
    m_timer.stop();
    return true;
}

void MomentChoice::postpone(int time) {
    m_time = time;
    m_timer.start(static_cast<int>(m_guard.remaining(m_clock())));
}

}  // namespace orvelle
