#include "link/server/peer_ports.h"

#include "link/clock.h"
#include "link/link_log.h"

#include <sodium.h>

#include <algorithm>
#include <utility>

namespace orvelle {

namespace {

constexpr int kBacklog = 64;
constexpr int64_t kKeptOpenMs = 10'000;  // a client that comes back finds its port as it was
constexpr int64_t kRememberedMs = 60'000;

bool isSameAddress(const sockaddr_in& a, const sockaddr_in& b) {
    return a.sin_addr.s_addr == b.sin_addr.s_addr && a.sin_port == b.sin_port;
}

SrtSocket listenOn(DatagramSocket& socket) {
    SrtSocket listener = createLinkSocket(SocketUse::Camera);
    if (!listener.isOpen() || srt_bind_acquire(listener.id(), socket.release()) < 0 ||
        srt_listen(listener.id(), kBacklog) < 0) {
        qCWarning(lcLink, "no socket for a client: %s", srt_getlasterror_str());
        return {};
    }
    return listener;
}

}  // namespace

PeerPorts::Opened PeerPorts::open(const sockaddr_in& peer, const Stray& stray) {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (Port& port : m_ports) {
        if (port.listener.isOpen() && isSameAddress(port.peer, peer)) {
            port.usedMs = steadyMilliseconds();
            return {port.number, port.way, SRT_INVALID_SOCK};
        }
    }
    DatagramSocket socket;
    if (!socket.bindBeside(m_gate, peer))
        return {};
    uint8_t buffer[kMaxDatagramBytes];
    sockaddr_in from{};
    for (int size; (size = socket.receive(buffer, sizeof buffer, from)) >= 0;) {
        if (!isSameAddress(from, peer))
            stray(buffer, std::min(static_cast<size_t>(size), sizeof buffer), from);
    }
    Port port;
    port.peer = peer;
    port.number = socket.port();
    port.listener = listenOn(socket);
    port.usedMs = steadyMilliseconds();
    randombytes_buf(&port.way, sizeof port.way);
    if (!port.listener.isOpen())
        return {};
    m_ports.push_back(std::move(port));
    return {m_ports.back().number, m_ports.back().way, m_ports.back().listener.id()};
}

bool PeerPorts::isListener(SRTSOCKET socket) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return std::any_of(m_ports.begin(), m_ports.end(), [socket](const Port& port) {
        return port.listener.isOpen() && port.listener.id() == socket;
    });
}

std::optional<sockaddr_in> PeerPorts::peerOf(uint64_t way) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const Port& port : m_ports) {
        if (port.way == way)
            return port.peer;
    }
    return std::nullopt;
}

void PeerPorts::closeUnused(int64_t nowMs,
                            const std::function<bool(const sockaddr_in& peer)>& isInUse) {
    std::vector<SrtSocket> closing;  // closed outside the lock
    std::lock_guard<std::mutex> lock(m_mutex);
    for (Port& port : m_ports) {
        if (isInUse(port.peer))
            port.usedMs = nowMs;
        else if (port.listener.isOpen() && nowMs - port.usedMs >= kKeptOpenMs)
            closing.push_back(std::move(port.listener));
    }
    const auto isForgotten = [nowMs](const Port& port) {
        return nowMs - port.usedMs >= kRememberedMs;
    };
    m_ports.erase(std::remove_if(m_ports.begin(), m_ports.end(), isForgotten), m_ports.end());
}

void PeerPorts::closeAll() {
    std::vector<Port> closing;
    std::lock_guard<std::mutex> lock(m_mutex);
    closing.swap(m_ports);
}

}  // namespace orvelle
