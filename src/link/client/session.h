#pragma once

#include "link/transport/srt_socket.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvelle {

class ClientChannel;

/// One session id: the camera it was bound to and the channels that are open on it. Any thread.
class ClientSession {
public:
    ClientSession(int sid, uint64_t token) : m_sid(sid), m_token(token) {}

    int sid() const { return m_sid; }
    /// Names this session to the camera.
    uint64_t token() const { return m_token; }

    void bind(const std::string& uid, const sockaddr_in& address);
    bool isBound() const;
    std::string uid() const;
    sockaddr_in address() const;

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
    const uint64_t m_token;

    // Each orders nothing by itself; waiters read them under their own lock.
    std::atomic<bool> m_aborted{false};
    std::atomic<uint32_t> m_interruptions{0};
    std::atomic<int64_t> m_lastHeardMs{0};

    mutable std::mutex m_mutex;  ///< guards the fields below
    bool m_isBound = false;
    std::string m_uid;
    sockaddr_in m_address{};
    std::vector<std::weak_ptr<ClientChannel>> m_channels;
};

}  // namespace orvelle
