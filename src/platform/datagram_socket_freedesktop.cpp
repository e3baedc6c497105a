#include "platform/datagram_socket.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <poll.h>
#include <unistd.h>

#include <cstring>

namespace orvelle {

DatagramSocket::DatagramSocket()
    : m_descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {}

DatagramSocket::~DatagramSocket() {
    if (isOpen())
        close(m_descriptor);
}

bool DatagramSocket::bindShared(const sockaddr_in& address) {
    return setOption(SO_REUSEADDR) && setOption(SO_REUSEPORT) &&
           bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

int DatagramSocket::receive(void* bytes, size_t size, sockaddr_in& from) {
    socklen_t fromBytes = sizeof from;
    return static_cast<int>(recvfrom(m_descriptor, bytes, size, MSG_TRUNC,
                                     reinterpret_cast<sockaddr*>(&from), &fromBytes));
}

bool DatagramSocket::waitForDatagram(int ms) {
    pollfd waiting{m_descriptor, POLLIN, 0};
    return poll(&waiting, 1, ms) > 0;
}

std::vector<in_addr> networkBroadcasts() {
    std::vector<in_addr> addresses;
    ifaddrs* interfaces = nullptr;
    if (getifaddrs(&interfaces) != 0)
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
        addresses.push_back({address.sin_addr.s_addr | ~mask.sin_addr.s_addr});
    }
    freeifaddrs(interfaces);
    return addresses;
}

in_addr loopbackBroadcast() {
    return {htonl(0x7FFFFFFF)};  // 127.255.255.255
}

}  // namespace orvelle
