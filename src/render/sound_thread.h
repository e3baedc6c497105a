#pragma once

#include <atomic>
#include <mutex>

#include "core/thread.h"

namespace orvelle {

/// The one thread of the process on which sound devices are listed, opened, fed and closed.
///
/// The toolkit's connection to the sound server is made once, by the first thread that asks for a
/// device, and comes back after a server's death only through that thread's event loop: so nothing
/// else may touch QAudioDeviceInfo or QAudioOutput. Runs while someone uses it; the object stays
/// and is started again, which keeps that connection alive.
class SoundThread : public KvThread {
public:
    static SoundThread& instance();

    /// Starts the thread with the first user. Any thread but this.
    void acquire();
    /// Ends it with the last, without waiting for it. Any thread but this.
    void release();
    /// Waits for its end, at the end of the process: false when the sound server hangs and with it
    /// the thread. Destructors of the toolkit's sound plugin would wait for that or abort then.
    bool hasEnded(int timeoutMs);

    void run() override;

    /// Whether the sound server answered when last asked; nobody should wait for one that did not.
    std::atomic<bool> isResponsive{true};

private:
    SoundThread();

    std::mutex m_mutex;  ///< guards everything below
    int m_users = 0;
    bool m_isEnded = true;  ///< run() is not going to serve anyone any more
};

}  // namespace orvelle
