#pragma once

#include "link/server/server_channel.h"

#include <map>

namespace orvelle {

/// A session whose client has proved the password: what its sockets are known by.
struct AdmittedSession {
    uint64_t token = 0;
    SecretKey secret;
    sockaddr_in peer{};  ///< where its sockets come from
};

/// One logged-in client of a server: its control socket and its media channels. Any thread.
class ServerClient {
public:
    ServerClient(int id, const AdmittedSession& session, std::shared_ptr<SealedSocket> control);

    int id() const { return m_id; }
    const AdmittedSession& session() const { return m_session; }

    void noteHeard(int64_t nowMs) { m_lastHeardMs = nowMs; }
    int64_t lastHeardMs() const { return m_lastHeardMs; }

    /// Result as LinkServer::sendControl.
    int send(const Message& message);

    /// Welcomes the caller on it; false when the channel is open already.
    bool openChannel(int number, std::shared_ptr<SealedSocket> socket, int64_t nominalBitsPerSecond,
                     ServerCounters& counters);
    void closeChannel(int number);
    std::shared_ptr<ServerChannel> channel(int number) const;
    std::vector<std::shared_ptr<ServerChannel>> channels() const;

    /// Takes all sockets out, for a goodbye or for closing; the channels are gone then.
    std::vector<std::shared_ptr<SealedSocket>> takeSockets();

private:
    // Fixed after construction.
    const int m_id;
    const AdmittedSession m_session;

    std::atomic<int64_t> m_lastHeardMs;  ///< orders nothing

    mutable std::mutex m_mutex;  ///< guards the fields below
    std::shared_ptr<SealedSocket> m_control;
    std::map<int, std::shared_ptr<ServerChannel>> m_channels;
};

}  // namespace orvelle
