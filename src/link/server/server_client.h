#pragma once

#include "link/server/server_channel.h"

#include <map>

namespace orvelle {

/// One logged-in client of a server: its control socket and its media channels. Any thread.
class ServerClient {
public:
    ServerClient(int id, uint64_t token, SrtSocket control);

    int id() const { return m_id; }
    uint64_t token() const { return m_token; }
    SRTSOCKET controlId() const { return m_controlId; }

    void noteHeard(int64_t nowMs) { m_lastHeardMs = nowMs; }
    int64_t lastHeardMs() const { return m_lastHeardMs; }

    /// Result as LinkServer::sendControl.
    int send(const Message& message);

    /// Welcomes the caller on it; false when the channel is open already.
    bool openChannel(int number, SrtSocket socket, int64_t nominalBitsPerSecond,
                     ServerCounters& counters);
    void closeChannel(int number);
    std::shared_ptr<ServerChannel> channel(int number) const;
    std::vector<std::shared_ptr<ServerChannel>> channels() const;

    /// Takes the control socket out for a goodbye, and closes the channels.
    SrtSocket takeControl();

private:
    // Fixed after construction.
    const int m_id;
    const uint64_t m_token;
    const SRTSOCKET m_controlId;

    std::atomic<int64_t> m_lastHeardMs;  ///< orders nothing

    mutable std::mutex m_mutex;  ///< guards the fields below
    SrtSocket m_control;
    std::map<int, std::shared_ptr<ServerChannel>> m_channels;
};

}  // namespace orvelle
