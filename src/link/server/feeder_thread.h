#pragma once

#include "core/thread.h"
#include "link/server/client_table.h"

namespace orvelle {

/// "link-feeder": hands queued frames over to the transport as fast as each path takes them.
/// Sleeps until frames came; while something is left waiting it looks again every 10 ms.
class FeederThread : public KvThread {
public:
    explicit FeederThread(const ClientTable& clients);

    void run() override;
    void stop() override;

    /// Frames were queued. Any thread.
    void notify();

private:
    bool waitForFrames(bool isSomethingLeft);

    const ClientTable& m_clients;

    std::mutex m_mutex;  ///< guards m_hasFrames
    std::condition_variable m_framesCame;
    bool m_hasFrames = false;
};

}  // namespace orvelle
