#pragma once

#include "link/crypto/cpace.h"
#include "link/transport/srt_socket.h"
#include "platform/datagram_socket.h"

namespace orvelle {

/// The one UDP port of a client that the sockets of all its sessions share, since the transport
/// runs two threads for each port. Any thread.
class LocalPort {
public:
    /// The wished-for port, or any when it is 0 or taken; false when the system gives none.
    bool open(uint16_t port);

    /// A socket on this port, not yet connected; not open when the library refuses one.
    SrtSocket makeCaller(SocketUse use) const;
    /// A datagram that the camera sees coming from where the sockets come from.
    bool send(const Bytes& bytes, const sockaddr_in& to) const;

    /// The name by which cameras know this port.
    uint64_t way() const { return m_way; }

private:
    const SrtLibrary m_library;  ///< goes last: a login may still run when the client is shut down
    // Fixed after open().
    SrtSocket m_anchor;  ///< bound and never used: the transport keeps the port while it lives
    DatagramSocket::Descriptor m_descriptor = DatagramSocket::kNone;  ///< the transport's
    sockaddr_in m_address{};
    uint64_t m_way = 0;
};

}  // namespace orvelle
