#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "link/limits.h"

class KvDevice;

namespace orvelle {

/// The attempts to connect that are under way, each on a thread of its own: a camera that takes a
/// login and lets it hang holds up no other. Any thread.
class ConnectAttempts {
public:
    /// At once: as many as the link has channels.
    static constexpr int kMaxAttempts = kMaxLinkChannels;

    ConnectAttempts();
    ~ConnectAttempts();  ///< aborts what is under way
    ConnectAttempts(const ConnectAttempts&) = delete;
    ConnectAttempts& operator=(const ConnectAttempts&) = delete;

    /// Begins to connect the device, which must stay until the attempt has ended. False when there
    /// are too many; one that is under way on the device counts as begun.
    bool begin(KvDevice& device);
    bool isUnderWay(const KvDevice& device) const;

    /// Aborts all and returns at once. One that is about to begin does not notice.
    void cancel();
    /// Waits for all, without aborting any.
    void wait();
    /// Aborts that of the device, or all, and waits for the end.
    void end(const KvDevice& device) { endThoseOf(&device); }
    void endAll() { endThoseOf(nullptr); }

private:
    class Attempt;

    // With the mutex held; null stands for all devices.
    bool isAnyUnderWay(const KvDevice* device) const;
    void abort(const KvDevice* device);

    void endThoseOf(const KvDevice* device);
    void noteEnd(Attempt& attempt);

    mutable std::mutex m_mutex;  ///< guards m_attempts and what they say of their end
    std::condition_variable m_changed;
    std::vector<std::unique_ptr<Attempt>> m_attempts;
};

}  // namespace orvelle
