#pragma once

#include <map>
#include <memory>
#include <vector>

#include "camera/card/playback.h"

namespace orvelle {

/// The playbacks of one camera: at most one a client, each on a channel that the client did not
/// use just before. Called by the link server's thread; stopAll() when that has ended.
class Playbacks {
public:
    /// `server` is borrowed.
    explicit Playbacks(LinkServer* server) : m_server(server) {}
    ~Playbacks();
    Playbacks(const Playbacks&) = delete;
    Playbacks& operator=(const Playbacks&) = delete;

    /// Ends the client's former one. 0 when the playback itself will answer, else why not. The
    /// store, which has the recording, outlives the playback.
    int32_t start(int clientId, const CardStore& store, const Recording& recording,
                  int64_t fromSec);
    /// Passed to the client's playback if that is on the channel.
    void grant(int clientId, const RoomGrant& room);
    void stop(int clientId);
    /// The client is gone.
    void forget(int clientId);
    /// Ends and joins all.
    void stopAll();

private:
    int nextChannel(int clientId);
    void reap();

    LinkServer* const m_server;
    std::map<int, std::unique_ptr<Playback>> m_running;  ///< by client
    std::map<int, int> m_lastChannels;                   ///< by client
    std::vector<std::unique_ptr<Playback>> m_stopped;    ///< not yet joined
};

}  // namespace orvelle
