#pragma once

#include <map>
#include <memory>
#include <vector>

#include "camera/card/playback.h"
#include "link/io_types.h"

namespace orvelle {

/// The playbacks of one camera for one purpose: at most one a client, each on a channel that the
/// client did not use just before. Called by the link server's thread; stopAll() when that has
/// ended.
class Playbacks {
public:
    /// What the playbacks of one purpose share.
    struct Purpose {
        int firstChannel;
        int channels;
        uint32_t replyType;
    };
    static constexpr Purpose kWatching = {1, 15, IOTYPE_USER_IPCAM_RECORD_PLAYCONTROL_RESP};
    static constexpr Purpose kDownloading = {16, 16, IOTYPE_CARD_DOWNLOAD_RESP};

    /// `server` is borrowed.
    Playbacks(LinkServer* server, const Purpose& purpose) : m_server(server), m_purpose(purpose) {}
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
    const Purpose m_purpose;
    std::map<int, std::unique_ptr<Playback>> m_running;  ///< by client
    std::map<int, int> m_lastSteps;                      ///< from the first channel, by client
    std::vector<std::unique_ptr<Playback>> m_stopped;    ///< not yet joined
};

}  // namespace orvelle
