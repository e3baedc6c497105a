#include "link/client/lan_query.h"

#include "link/clock.h"
#include "link/environment.h"
#include "link/link_log.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <random>

namespace orvelle {

namespace {

constexpr int kQueries = 3;
constexpr int64_t kQueryIntervalMs = 200;

// Directed broadcasts: the all-ones address fails on a machine without a default route.
std::vector<in_addr_t> broadcastAddresses() {
    std::vector<in_addr_t> addresses{htonl(0x7FFFFFFF)};  // 127.255.255.255
    ifaddrs* interfaces = nullptr;
    if (isLinkLoopbackOnly() || getifaddrs(&interfaces) != 0)
        return addresses;
    constexpr unsigned kUnwanted = IFF_LOOPBACK | IFF_POINTOPOINT;
    for (const ifaddrs* entry = interfaces; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || !entry->ifa_netmask || entry->ifa_addr->sa_family != AF_INET ||
            !(entry->ifa_flags & IFF_UP) || (entry->ifa_flags & kUnwanted))
            continue;
        sockaddr_in address;
        sockaddr_in mask;
        std::memcpy(&address, entry->ifa_addr, sizeof address);
        std::memcpy(&mask, entry->ifa_netmask, sizeof mask);
        addresses.push_back(address.sin_addr.s_addr | ~mask.sin_addr.s_addr);
    }
    freeifaddrs(interfaces);
    return addresses;
}

int openBroadcastSocket() {
    const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int on = 1;
    if (descriptor >= 0)
        setsockopt(descriptor, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    return descriptor;
}

}  // namespace

LanQuery::LanQuery(const std::string& uid)
    : m_query{std::random_device{}(), uid},
      m_socket(openBroadcastSocket()),
      m_nextQueryMs(steadyMilliseconds()) {
    if (m_socket < 0)
        qCWarning(lcLink, "no socket for the LAN search");
}

LanQuery::~LanQuery() {
    if (m_socket >= 0)
        close(m_socket);
}

void LanQuery::sendDueQueries() {
    if (m_queriesSent == kQueries || steadyMilliseconds() < m_nextQueryMs)
        return;
    ++m_queriesSent;
    m_nextQueryMs += kQueryIntervalMs;
    const SearchDatagram datagram = encodeSearchQuery(m_query);
    for (const in_addr_t address : broadcastAddresses()) {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(discoveryPort());
        to.sin_addr.s_addr = address;
        // A network that refuses the broadcast is as good as one without cameras.
        [[maybe_unused]] const ssize_t sent =
            sendto(m_socket, datagram.data(), datagram.size(), 0,
                   reinterpret_cast<const sockaddr*>(&to), sizeof to);
    }
}

std::optional<LanAnswer> LanQuery::next(int waitMs) {
    sendDueQueries();
    pollfd waiting{m_socket, POLLIN, 0};
    if (poll(&waiting, 1, waitMs) <= 0)
        return std::nullopt;
    return receive();
}

std::optional<LanAnswer> LanQuery::receive() {
    uint8_t buffer[kSearchBytes + 1];  // one more shows that a datagram is too long
    sockaddr_in from{};
    socklen_t fromBytes = sizeof from;
    const ssize_t size = recvfrom(m_socket, buffer, sizeof buffer, 0,
                                  reinterpret_cast<sockaddr*>(&from), &fromBytes);
    if (size < 0)
        return std::nullopt;
    const auto answer = decodeSearchAnswer(buffer, static_cast<size_t>(size));
    if (!answer || answer->nonce != m_query.nonce ||
        (!m_query.uid.empty() && answer->uid != m_query.uid))
        return std::nullopt;
    from.sin_port = htons(answer->port);
    return LanAnswer{answer->uid, answer->deviceName, from};
}

}  // namespace orvelle
