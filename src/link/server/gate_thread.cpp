#include "link/server/gate_thread.h"

#include "link/clock.h"
#include "link/link_log.h"
#include "link/result_codes.h"

#include <utility>

namespace orvelle {

namespace {

constexpr int kMaxAnswersInARow = 64;
constexpr int kTickMs = 1000;
constexpr int64_t kPlaceMs = 3000;  // for the sockets of a session to come

}  // namespace

GateThread::GateThread(const std::string& uid, const CpaceGenerator& generator,
                       DatagramSocket& gate, SearchResponder& search, ClientTable& clients,
                       PeerPorts& ports, std::function<void(SRTSOCKET)> watch)
    : KvThread(QStringLiteral("link-gate")),
      m_socket(gate),
      m_search(search),
      m_clients(clients),
      m_ports(ports),
      m_watch(std::move(watch)),
      m_gate(uid, kLinkAccount, generator, *this) {}

void GateThread::run() {
    while (!isStopped()) {
        DatagramSocket::waitForAny({&m_socket, &m_search.socket()}, kTickMs);
        answerWaiting();
        m_search.answerWaiting();
        const int64_t nowMs = steadyMilliseconds();
        if (nowMs < m_nextTickMs)
            continue;
        m_nextTickMs = nowMs + kTickMs;
        m_gate.expire(nowMs);
        while (const auto line = m_gate.nextLogLine(nowMs))
            qCWarning(lcLink, "%s", line->c_str());
    }
}

// A datagram to itself ends the wait.
void GateThread::stop() {
    KvThread::stop();
    DatagramSocket waker;
    const auto self = ipv4Address("127.0.0.1", m_socket.port());
    [[maybe_unused]] const bool isSent = waker.send("", 1, *self);
}

void GateThread::answerWaiting() {
    uint8_t buffer[kMaxDatagramBytes];
    for (int i = 0; i < kMaxAnswersInARow; ++i) {
        sockaddr_in from{};
        const int size = m_socket.receive(buffer, sizeof buffer, from);
        if (size < 0)
            return;
        if (static_cast<size_t>(size) <= sizeof buffer)
            answer(buffer, static_cast<size_t>(size), from);
        for (const Datagram& stray : std::exchange(m_strays, {}))
            answer(stray.bytes.data(), stray.bytes.size(), stray.from);
    }
}

void GateThread::answer(const uint8_t* data, size_t size, const sockaddr_in& from) {
    if (const auto found = m_search.answerTo(data, size)) {
        [[maybe_unused]] const bool isSent = m_socket.send(found->data(), found->size(), from);
        return;
    }
    const auto answer = m_gate.handle(data, size, from, steadyMilliseconds());
    // What cannot be sent is asked for again.
    if (answer) [[maybe_unused]]
        const bool isSent = m_socket.send(answer->bytes.data(), answer->bytes.size(), answer->to);
}

LoginGate::Host::Admission GateThread::admit(uint64_t token, const SecretKey& secret,
                                             const sockaddr_in& peer, uint64_t way) {
    switch (m_clients.reserve({token, secret, peer}, steadyMilliseconds() + kPlaceMs)) {
        case ClientTable::Reservation::Done:
            break;
        case ClientTable::Reservation::Full:
            return {AV_ER_NO_PERMISSION, 0};
        case ClientTable::Reservation::TokenInUse:
            return {LINK_ER_CHANNEL_IN_USE, 0};
    }
    const PeerPorts::Opened opened =
        m_ports.open(peer, way, [this](const uint8_t* data, size_t size, const sockaddr_in& from) {
            m_strays.push_back({Bytes(data, data + size), from});
        });
    if (opened.listener != SRT_INVALID_SOCK)
        m_watch(opened.listener);
    if (opened.port == 0) {
        m_clients.unreserve(token);
        return {LINK_ER_NETWORK, 0};
    }
    // Behind a relay the client knows the port by another number.
    const bool isSame = opened.port == m_socket.port();
    return {0, isSame ? uint16_t{0} : opened.port};
}

}  // namespace orvelle
