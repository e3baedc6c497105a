#pragma once

#include "link/client/camera_search.h"
#include "link/crypto/secret_bytes.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace orvelle {

class ClientChannel;

/// One session id: the camera it was bound to and the channels that are open on it. Any thread.
class ClientSession {
public:
    explicit ClientSession(int sid) : m_sid(sid) {}

    int sid() const { return m_sid; }

    /// Takes a search that has found somebody.
    void bind(const std::string& uid, std::unique_ptr<CameraSearch> search);
    bool isBound() const;
    std::string uid() const;
    /// Of the camera, or of the first who answered as long as nobody has proved to be it.
    sockaddr_in address() const;
    /// The search for the one login that goes on with it; null for later ones.
    std::unique_ptr<CameraSearch> takeSearch();
    /// Everybody who has answered to the UID so far.
    std::vector<sockaddr_in> candidates() const;

    /// What the login on channel 0 came to.
    struct Proof {
        sockaddr_in camera{};         ///< who answered
        sockaddr_in socketAddress{};  ///< where it waits for sockets
        uint64_t token = 0;           ///< names the session to the camera
        SecretKey secret;
    };
    void prove(const Proof& proof);
    std::optional<Proof> proof() const;

    /// Sticky: finding, logins and receives of this session end at once, also later ones.
    void abort();
    bool isAborted() const { return m_aborted; }
    /// Ends the logins and receives that are pending now. Each sees the count change.
    void interrupt();
    uint32_t interruptions() const { return m_interruptions; }

    /// Something came from the camera.
    void noteHeard(int64_t nowMs) { m_lastHeardMs = nowMs; }
    int64_t lastHeardMs() const { return m_lastHeardMs; }

    /// False when the channel number is taken, or channel 0 is not open before another one.
    bool canOpen(int channelNumber) const;
    void addChannel(const std::shared_ptr<ClientChannel>& channel);
    /// Those that still exist.
    std::vector<std::shared_ptr<ClientChannel>> channels() const;

private:
    const int m_sid;

    // Each orders nothing by itself; waiters read them under their own lock.
    std::atomic<bool> m_aborted{false};
    std::atomic<uint32_t> m_interruptions{0};
    std::atomic<int64_t> m_lastHeardMs{0};

    mutable std::mutex m_mutex;  ///< guards the fields below
    std::string m_uid;
    std::vector<sockaddr_in> m_candidates;
    std::unique_ptr<CameraSearch> m_search;
    std::optional<Proof> m_proof;
    std::vector<std::weak_ptr<ClientChannel>> m_channels;
};

}  // namespace orvelle
