#include "link/client/local_port.h"

#include "link/environment.h"
#include "link/link_log.h"

namespace orvelle {

namespace {

bool bindPlainly(DatagramSocket& socket, uint16_t port) {
    const auto address = ipv4Address(isLinkLoopbackOnly() ? "127.0.0.1" : "0.0.0.0", port);
    return socket.bindExclusively(*address);
}

}  // namespace

bool LocalPort::open(uint16_t port) {
    DatagramSocket socket;
    if (!bindPlainly(socket, port) && !bindPlainly(socket, 0)) {
        qCWarning(lcLink, "the system gives no local port");
        return false;
    }
    m_address = *ipv4Address(isLinkLoopbackOnly() ? "127.0.0.1" : "0.0.0.0", socket.port());
    randombytes_buf(&m_way, sizeof m_way);
    m_anchor = createLinkSocket(SocketUse::Control);
    if (m_anchor.isOpen() && srt_bind_acquire(m_anchor.id(), socket.descriptor()) == 0) {
        m_descriptor = socket.release();
        return true;
    }
    qCWarning(lcLink, "no local port: %s", srt_getlasterror_str());
    return false;
}

SrtSocket LocalPort::makeCaller(SocketUse use) const {
    SrtSocket socket = createLinkSocket(use);
    if (socket.isOpen() && srt_bind(socket.id(), asSockaddr(m_address), sizeof m_address) < 0) {
        qCWarning(lcLink, "no socket on the local port: %s", srt_getlasterror_str());
        socket.close();
    }
    return socket;
}

bool LocalPort::send(const Bytes& bytes, const sockaddr_in& to) const {
    return DatagramSocket::sendOn(m_descriptor, bytes.data(), bytes.size(), to);
}

}  // namespace orvelle
