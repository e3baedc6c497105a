#include "platform/datagram_socket.h"

#include <fcntl.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <utility>

namespace orvelle {

namespace {

bool bindTo(DatagramSocket::Descriptor descriptor, const sockaddr_in& address) {
    return bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace

DatagramSocket::DatagramSocket()
    : m_descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {}

DatagramSocket::~DatagramSocket() {
    if (isOpen())
        close(m_descriptor);
}

bool DatagramSocket::bindShared(const sockaddr_in& address) {
    return setOption(SO_REUSEADDR) && setOption(SO_REUSEPORT) && bindTo(m_descriptor, address);
}

bool DatagramSocket::bindExclusively(const sockaddr_in& address) {
    return bindTo(m_descriptor, address);
}

// The system compares the option of both sockets when the second is bound: set afterwards, it lets
// the gate's own companions in and no other gate.
bool DatagramSocket::bindAsGate(const sockaddr_in& address) {
    return bindTo(m_descriptor, address) && setOption(SO_REUSEADDR);
}

bool DatagramSocket::bindBeside(const sockaddr_in& gate, const sockaddr_in& peer) {
    return setOption(SO_REUSEADDR) && bindTo(m_descriptor, gate) &&
           connect(m_descriptor, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) == 0;
}

void DatagramSocket::makeBlocking() {
    fcntl(m_descriptor, F_SETFL, fcntl(m_descriptor, F_GETFL) & ~O_NONBLOCK);
}

DatagramSocket::Descriptor DatagramSocket::release() {
    makeBlocking();
    return std::exchange(m_descriptor, kNone);
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

// The descriptor goes on as one that only its own machine's discard port could send to. It waits as
// the library's own do, which would otherwise ask it without pause.
void DatagramSocket::giveUpPort(Descriptor descriptor) {
    DatagramSocket standIn;
    sockaddr_in discard{};
    discard.sin_family = AF_INET;
    discard.sin_port = htons(9);
    discard.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const timeval patience{0, 10'000};
    if (!standIn.isOpen() ||
        connect(standIn.m_descriptor, reinterpret_cast<const sockaddr*>(&discard),
                sizeof discard) != 0 ||
        setsockopt(standIn.m_descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience) != 0)
        return;
    standIn.makeBlocking();
    dup3(standIn.m_descriptor, descriptor, O_CLOEXEC);
}

bool DatagramSocket::waitForAny(std::initializer_list<const DatagramSocket*> sockets, int ms) {
    std::array<pollfd, 8> waiting{};
    nfds_t count = 0;
    for (const DatagramSocket* socket : sockets) {
        if (socket->isOpen() && count < waiting.size())
            waiting[count++] = {socket->m_descriptor, POLLIN, 0};
    }
    return poll(waiting.data(), count, ms) > 0;
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

// The second is where a Windows program under Wine listens.
std::vector<in_addr> loopbackTargets() {
    return {loopbackBroadcast(), {htonl(INADDR_LOOPBACK)}};
}

}  // namespace orvelle
