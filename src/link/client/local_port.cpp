#include "link/client/local_port.h"

#include "link/environment.h"
#include "link/link_log.h"

namespace orvelle {

namespace {

constexpr size_t kMaxWays = 256;

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
    m_anchor = createLinkSocket(SocketUse::Control);
    m_descriptor = socket.release();
    if (m_anchor.isOpen() && srt_bind_acquire(m_anchor.id(), m_descriptor) == 0)
        return true;
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

uint64_t LocalPort::wayTo(const sockaddr_in& camera) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto known = m_ways.find({camera.sin_addr.s_addr, camera.sin_port});
    return known == m_ways.end() ? 0 : known->second;
}

void LocalPort::noteWay(const sockaddr_in& camera, uint64_t way) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_ways.size() >= kMaxWays)
        m_ways.clear();
    m_ways[{camera.sin_addr.s_addr, camera.sin_port}] = way;
}

}  // namespace orvelle
