#pragma once

#include "link/transport/srt_socket.h"
#include "platform/datagram_socket.h"

#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace orvelle {

/// Listening sockets of the transport, one for each address whose client has proved the password.
/// The system lets only that address through to it, so strangers never reach the transport: it
/// neither allocates nor queues anything for them. Any thread.
class PeerPorts {
public:
    /// `gate`: the address that all clients send to.
    explicit PeerPorts(const sockaddr_in& gate) : m_gate(gate) {}

    struct Opened {
        uint16_t port = 0;                      ///< 0: the system gave no socket
        SRTSOCKET listener = SRT_INVALID_SOCK;  ///< new, to be watched; none when it was open
    };
    /// `stray` gets what strangers sent to the new port before the system knew whose it is.
    using Stray = std::function<void(const uint8_t* data, size_t size, const sockaddr_in& from)>;
    /// `way`: the peer's own name for its address.
    Opened open(const sockaddr_in& peer, uint64_t way, const Stray& stray);

    bool isListener(SRTSOCKET socket) const;
    /// Counts a socket that was accepted. False when the address has opened more than a client
    /// ever would, which can only be somebody who forges it: the port was closed with all its
    /// sockets, and the client has to log in anew.
    bool noteAccepted(SRTSOCKET listener, int64_t nowMs);
    /// The address behind a way. While its port is open, what the peer sends from there to the gate
    /// ends in the transport.
    std::optional<sockaddr_in> peerOf(uint64_t way) const;
    /// Closes those whose peer `isInUse` says no to, with all sockets that came from there.
    void closeUnused(const std::function<bool(const sockaddr_in& peer)>& isInUse);
    void closeAll();

private:
    struct Port {
        sockaddr_in peer{};
        uint64_t way = 0;  ///< 0 for none
        uint16_t number = 0;
        DatagramSocket::Descriptor descriptor = DatagramSocket::kNone;  ///< the transport's
        SrtSocket listener;
        int accepted = 0;  ///< since countedMs
        int64_t countedMs = 0;
    };

    static void giveUp(std::vector<Port>& ports);

    const sockaddr_in m_gate;

    mutable std::mutex m_mutex;  ///< guards m_ports
    std::vector<Port> m_ports;
};

}  // namespace orvelle
