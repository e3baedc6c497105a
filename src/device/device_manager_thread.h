#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>

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

private:
    std::mutex m_mutex;  ///< guards m_raised
    std::condition_variable m_changed;
    bool m_raised = false;
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
