#include "link/server/peer_ports.h"

#include "link/link_log.h"

#include <algorithm>
#include <utility>

namespace orvelle {

namespace {

constexpr int kBacklog = 32;
constexpr int kMaxAccepted = 100;
constexpr int64_t kCountMs = 10'000;

// Takes the socket over when it succeeds.
SrtSocket listenOn(DatagramSocket& socket) {
    SrtSocket listener = createLinkSocket(SocketUse::Camera);
    if (listener.isOpen() && srt_bind_acquire(listener.id(), socket.descriptor()) == 0) {
        const DatagramSocket::Descriptor descriptor = socket.release();
        if (srt_listen(listener.id(), kBacklog) == 0)
            return listener;
        DatagramSocket::giveUpPort(descriptor);
    }
    qCWarning(lcLink, "no socket for a client: %s", srt_getlasterror_str());
    return {};
}

}  // namespace

PeerPorts::Opened PeerPorts::open(const sockaddr_in& peer, uint64_t way, const Stray& stray) {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (Port& port : m_ports) {
        if (port.way == way)
            port.way = 0;  // the newest has it
    }
    for (Port& port : m_ports) {
        if (isSameAddress(port.peer, peer)) {
            port.way = way;
            return {port.number, SRT_INVALID_SOCK};
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
    port.descriptor = socket.descriptor();
    port.listener = listenOn(socket);
    port.way = way;
    if (!port.listener.isOpen())
        return {};
    m_ports.push_back(std::move(port));
    return {m_ports.back().number, m_ports.back().listener.id()};
}

bool PeerPorts::isListener(SRTSOCKET socket) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return std::any_of(m_ports.begin(), m_ports.end(),
                       [socket](const Port& port) { return port.listener.id() == socket; });
}

bool PeerPorts::noteAccepted(SRTSOCKET listener, int64_t nowMs) {
    std::vector<Port> closing;  // closed outside the lock
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = std::find_if(m_ports.begin(), m_ports.end(), [&](const Port& port) {
        return port.listener.id() == listener;
    });
    if (found == m_ports.end())
        return false;
    if (nowMs - found->countedMs >= kCountMs) {
        found->countedMs = nowMs;
        found->accepted = 0;
    }
    if (++found->accepted <= kMaxAccepted)
        return true;
    closing.push_back(std::move(*found));
    m_ports.erase(found);
    giveUp(closing);
    return false;
}

std::optional<sockaddr_in> PeerPorts::peerOf(uint64_t way) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const Port& port : m_ports) {
        if (way != 0 && port.way == way)
            return port.peer;
    }
    return std::nullopt;
}

void PeerPorts::closeUnused(const std::function<bool(const sockaddr_in& peer)>& isInUse) {
    std::vector<Port> closing;  // closed outside the lock
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto firstUnused = std::partition(m_ports.begin(), m_ports.end(),
                                            [&](const Port& port) { return isInUse(port.peer); });
    closing.assign(std::make_move_iterator(firstUnused), std::make_move_iterator(m_ports.end()));
    m_ports.erase(firstUnused, m_ports.end());
    giveUp(closing);
}

// The transport closes a port seconds after its last socket; until then it would take what the
// peer sends to the gate.
void PeerPorts::giveUp(std::vector<Port>& ports) {
    for (const Port& port : ports)
        DatagramSocket::giveUpPort(port.descriptor);
}

void PeerPorts::closeAll() {
    closeUnused([](const sockaddr_in&) { return false; });
}

}  // namespace orvelle
