#include "link/client/lan_query.h"

#include "link/clock.h"
#include "link/environment.h"
#include "link/link_log.h"
#include "link/wire/version_one.h"

#include <random>
#include <vector>

namespace orvelle {

namespace {

constexpr int kQuickQueries = 3;
constexpr int64_t kQuickIntervalMs = 200;
constexpr int64_t kIntervalMs = 500;
constexpr int kMaxDatagramsInARow = 64;

}  // namespace

LanQuery::LanQuery(const std::string& uid, const std::optional<sockaddr_in>& direct)
    : m_query{std::random_device{}(), uid}, m_direct(direct), m_nextQueryMs(steadyMilliseconds()) {
    if (!m_socket.allowBroadcast())
        qCWarning(lcLink, "no socket for the LAN search");
}

void LanQuery::sendDueQueries() {
    if (steadyMilliseconds() < m_nextQueryMs)
        return;
    ++m_queriesSent;
    m_nextQueryMs =
        steadyMilliseconds() + (m_queriesSent < kQuickQueries ? kQuickIntervalMs : kIntervalMs);
    const SearchDatagram datagram = encodeSearchQuery(m_query);
    // An address that cannot be reached is as good as one without a camera.
    if (m_direct) [[maybe_unused]]
        const bool isSent = m_socket.send(datagram.data(), datagram.size(), *m_direct);
    std::vector<in_addr> addresses = loopbackTargets();
    if (!isLinkLoopbackOnly()) {
        const std::vector<in_addr> networks = networkBroadcasts();
        m_wasNetworkUp = !networks.empty();
        addresses.insert(addresses.end(), networks.begin(), networks.end());
    }
    for (const in_addr address : addresses) {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(discoveryPort());
        to.sin_addr = address;
        // A network that refuses the broadcast is as good as one without cameras.
        [[maybe_unused]] const bool isSent = m_socket.send(datagram.data(), datagram.size(), to);
    }
}

std::optional<LanAnswer> LanQuery::next(int waitMs) {
    sendDueQueries();
    if (!m_socket.waitForDatagram(waitMs))
        return std::nullopt;
    uint8_t buffer[kSearchBytes + 1];  // one more shows that a datagram is too long
    sockaddr_in from{};
    for (int i = 0; i < kMaxDatagramsInARow; ++i) {
        const int size = m_socket.receive(buffer, sizeof buffer, from);
        if (size < 0)
            break;
        if (const auto answer = decode(buffer, static_cast<size_t>(size), from))
            return answer;
    }
    return std::nullopt;
}

void LanQuery::probeForVersionOne(const sockaddr_in& address) {
    const Bytes probe = versionOneProbe();
    [[maybe_unused]] const bool isSent = m_socket.send(probe.data(), probe.size(), address);
}

std::optional<LanAnswer> LanQuery::decode(const uint8_t* data, size_t size,
                                          sockaddr_in from) const {
    const bool isDirect = m_direct && isSameAddress(from, *m_direct);
    if (isDirect && isVersionOneAnswer(data, size))
        return LanAnswer{m_query.uid, {}, from, 1};
    const auto answer = decodeSearchAnswer(data, size);
    if (!answer || answer->nonce != m_query.nonce ||
        (!isDirect && !m_query.uid.empty() && answer->uid != m_query.uid))
        return std::nullopt;
    // Behind a relay the camera's own idea of its port means nothing.
    if (!isDirect)
        from.sin_port = htons(answer->port);
    return LanAnswer{answer->uid, answer->deviceName, from, answer->version};
}

}  // namespace orvelle
