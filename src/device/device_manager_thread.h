#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

#include "core/thread.h"

class KvDeviceManager;

namespace orvelle {

/// Ends the pause between two rounds early, since a camera dropped or the thread is to stop.
/// Shared by the manager and its devices. Any thread.
class RoundSignal {
public:
    void raise();
    /// Waits up to `timeoutMs` for a raise(), also one that came before; consumes it.
    void wait(int timeoutMs);
    bool wasRaisedWithin(int ms) const;

private:
    using Clock = std::chrono::steady_clock;

    mutable std::mutex m_mutex;  ///< guards what follows
    std::condition_variable m_changed;
    bool m_raised = false;
    std::optional<Clock::time_point> m_lastRaise;
};

}  // namespace orvelle

/// Connects the manager's devices, round after round; outlived by the manager.
class KvDeviceManagerThread : public KvThread {
public:
    KvDeviceManagerThread(KvDeviceManager& manager, std::shared_ptr<orvelle::RoundSignal> signal);
    void run() override;
    void stop() override;

private:
    KvDeviceManager& m_manager;
    const std::shared_ptr<orvelle::RoundSignal> m_roundSignal;
};
