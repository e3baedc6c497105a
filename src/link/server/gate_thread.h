#pragma once

#include "core/thread.h"
#include "link/server/client_table.h"
#include "link/server/login_gate.h"
#include "link/server/peer_ports.h"
#include "link/server/search_responder.h"

#include <functional>

namespace orvelle {

/// "link-gate": what strangers can reach. It answers logins on the link's port and searches on the
/// discovery port, and opens a way to the transport for those who have proved the password. A flood
/// costs this thread's time only. Owner: LinkServer.
class GateThread : public KvThread, private LoginGate::Host {
public:
    /// `gate` is bound; `watch` is told each new listening socket, on this thread.
    GateThread(const std::string& uid, const CpaceGenerator& generator, DatagramSocket& gate,
               SearchResponder& search, ClientTable& clients, PeerPorts& ports,
               std::function<void(SRTSOCKET)> watch);

    void run() override;
    void stop() override;

private:
    Admission admit(uint64_t token, const SecretKey& secret, const sockaddr_in& peer,
                    uint64_t way) override;
    std::optional<sockaddr_in> peerOf(uint64_t way) const override { return m_ports.peerOf(way); }
    void answerWaiting();
    void answer(const uint8_t* data, size_t size, const sockaddr_in& from);

    struct Datagram {
        Bytes bytes;
        sockaddr_in from{};
    };

    DatagramSocket& m_socket;
    SearchResponder& m_search;
    ClientTable& m_clients;
    PeerPorts& m_ports;
    const std::function<void(SRTSOCKET)> m_watch;

    // Owned by this thread.
    LoginGate m_gate;
    std::vector<Datagram> m_strays;  ///< came to a client's new port, and are answered next
    int64_t m_nextTickMs = 0;
};

}  // namespace orvelle
