#include "device/device_manager_thread.h"

#include <algorithm>
#include <chrono>

#include "device/connect_round.h"
#include "device/device_manager.h"
#include "link/result_codes.h"

namespace orvelle {

void RoundSignal::raise() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_raised = true;
    m_lastRaise = Clock::now();
    m_changed.notify_all();
}

void RoundSignal::wait(int timeoutMs) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return m_raised; });
    m_raised = false;
}

bool RoundSignal::wasRaisedWithin(int ms) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lastRaise && Clock::now() - *m_lastRaise < std::chrono::milliseconds(ms);
}

}  // namespace orvelle

KvDeviceManagerThread::KvDeviceManagerThread(KvDeviceManager& manager,
                                             std::shared_ptr<orvelle::RoundSignal> signal)
    : KvThread(QStringLiteral("device-manager")),
      m_manager(manager),
      m_roundSignal(std::move(signal)) {}

void KvDeviceManagerThread::run() {
    const KvDeviceManager::Timing timing = m_manager.m_timing;
    while (!isStopped()) {
        const auto start = std::chrono::steady_clock::now();
        const int started = m_manager.startLink();
        const int asked = orvelle::ConnectRound(m_manager, m_manager.m_attempts).run(*this);
        m_manager.noteLink(started < 0 ? started : asked == LINK_ER_NO_SOCKET ? asked : 0);
        // A camera that dropped a moment ago is likely to be back in a moment.
        const bool isSoon = m_roundSignal->wasRaisedWithin(timing.lostMs);
        m_roundSignal->wait(isSoon ? std::min(timing.minPauseMs, timing.pauseMs) : timing.pauseMs);
        // A camera that drops as soon as it is connected must not make the rounds spin.
        const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now() - start);
        const int tooEarlyMs = timing.minPauseMs - static_cast<int>(elapsed.count());
        if (tooEarlyMs > 0 && sleepUnlessStopped(tooEarlyMs))
            break;
    }
    // Whoever stops the thread goes on aborting them until it has ended.
    m_manager.m_attempts.wait();
}

void KvDeviceManagerThread::stop() {
    KvThread::stop();
    m_roundSignal->raise();
}
