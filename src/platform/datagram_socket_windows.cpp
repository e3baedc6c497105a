#include "platform/datagram_socket.h"

#include <iphlpapi.h>
#include <mswsock.h>

#include <array>
#include <cstring>
#include <utility>

namespace orvelle {

DatagramSocket::DatagramSocket() {
    // Counted by the system, one for each socket.
    WSADATA data = {};
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0)
        return;
    m_descriptor = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    u_long isNonBlocking = 1;
    if (isOpen() && ioctlsocket(m_descriptor, FIONBIO, &isNonBlocking) == 0) {
        // Else a datagram to a port that nobody has makes the next receive() fail.
        BOOL isReported = FALSE;
        DWORD bytes = 0;
        WSAIoctl(m_descriptor, SIO_UDP_CONNRESET, &isReported, sizeof isReported, nullptr, 0,
                 &bytes, nullptr, nullptr);
        return;
    }
    if (isOpen())
        closesocket(m_descriptor);
    m_descriptor = kNone;
    WSACleanup();
}

DatagramSocket::~DatagramSocket() {
    if (!isOpen())
        return;
    closesocket(m_descriptor);
    WSACleanup();
}

bool DatagramSocket::bindShared(const sockaddr_in& address) {
    return setOption(SO_REUSEADDR) &&
           bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool DatagramSocket::bindExclusively(const sockaddr_in& address) {
    return setOption(SO_EXCLUSIVEADDRUSE) &&
           bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool DatagramSocket::bindAsGate(const sockaddr_in& address) {
    return bindExclusively(address);
}

// Of two sockets on one port this system feeds either, connected or not, so a free port is taken.
// Connected to the peer, it would carry nothing of the transport's.
bool DatagramSocket::bindBeside(const sockaddr_in& gate, const sockaddr_in&) {
    sockaddr_in address = gate;
    address.sin_port = 0;
    return bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

// The library that takes the descriptor sets it as it wants.
void DatagramSocket::makeBlocking() {}

// The library counts its own use of the system's sockets.
DatagramSocket::Descriptor DatagramSocket::release() {
    if (isOpen())
        WSACleanup();
    return std::exchange(m_descriptor, kNone);
}

int DatagramSocket::receive(void* bytes, size_t size, sockaddr_in& from) {
    int fromBytes = sizeof from;
    const int received = recvfrom(m_descriptor, static_cast<char*>(bytes), static_cast<int>(size),
                                  0, reinterpret_cast<sockaddr*>(&from), &fromBytes);
    const bool isCut = received < 0 && WSAGetLastError() == WSAEMSGSIZE;
    return isCut ? static_cast<int>(size) : received;
}

bool DatagramSocket::waitForDatagram(int ms) {
    if (!isOpen()) {
        Sleep(static_cast<DWORD>(ms));
        return false;
    }
    WSAPOLLFD waiting{m_descriptor, POLLRDNORM, 0};
    return WSAPoll(&waiting, 1, ms) > 0;
}

// The system has no way, and bindBeside() takes a port that nobody else wants.
void DatagramSocket::giveUpPort(Descriptor) {}

bool DatagramSocket::waitForAny(std::initializer_list<const DatagramSocket*> sockets, int ms) {
    std::array<WSAPOLLFD, 8> waiting{};
    ULONG count = 0;
    for (const DatagramSocket* socket : sockets) {
        if (socket->isOpen() && count < waiting.size())
            waiting[count++] = {socket->m_descriptor, POLLRDNORM, 0};
    }
    if (count == 0) {
        Sleep(static_cast<DWORD>(ms));
        return false;
    }
    return WSAPoll(waiting.data(), count, ms) > 0;
}

namespace {

constexpr UINT8 kLongestPrefix = 30;  // of a network that has a broadcast address

/// All adapters, whose entries point into the same bytes; empty when the system tells none.
std::vector<char> adapterTable() {
    constexpr ULONG kFlags =
        GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;
    constexpr int kTries = 3;  // the table may grow between the two calls
    std::vector<char> table(16 * 1024);
    for (int i = 0; i < kTries; ++i) {
        ULONG bytes = static_cast<ULONG>(table.size());
        const ULONG result =
            GetAdaptersAddresses(AF_INET, kFlags, nullptr,
                                 reinterpret_cast<IP_ADAPTER_ADDRESSES*>(table.data()), &bytes);
        if (result == ERROR_SUCCESS)
            return table;
        if (result != ERROR_BUFFER_OVERFLOW)
            break;
        table.resize(bytes);
    }
    return {};
}

/// Whether its other end is the only one: a dial-up line, or a tunnel that leads elsewhere.
bool isLine(const IP_ADAPTER_ADDRESSES& adapter) {
    return adapter.IfType == IF_TYPE_PPP || adapter.IfType == IF_TYPE_TUNNEL ||
           adapter.IfType == IF_TYPE_PROP_VIRTUAL;
}

}  // namespace

std::vector<in_addr> networkBroadcasts() {
    std::vector<in_addr> addresses;
    const std::vector<char> table = adapterTable();
    if (table.empty())
        return addresses;
    for (auto* adapter = reinterpret_cast<const IP_ADAPTER_ADDRESSES*>(table.data()); adapter;
         adapter = adapter->Next) {
        if (adapter->OperStatus != IfOperStatusUp || adapter->IfType == IF_TYPE_SOFTWARE_LOOPBACK ||
            isLine(*adapter))
            continue;
        for (auto* entry = adapter->FirstUnicastAddress; entry; entry = entry->Next) {
            if (entry->OnLinkPrefixLength > kLongestPrefix)
                continue;
            sockaddr_in address;
            std::memcpy(&address, entry->Address.lpSockaddr, sizeof address);
            ULONG mask = 0;
            if (ConvertLengthToIpv4Mask(entry->OnLinkPrefixLength, &mask) == NO_ERROR)
                address.sin_addr.s_addr |= ~mask;
            addresses.push_back(address.sin_addr);
        }
    }
    return addresses;
}

// The system takes no loopback broadcast. Of several programs on one port, one hears this.
in_addr loopbackBroadcast() {
    in_addr address = {};
    address.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// The second is refused by Windows itself, but is what programs beside Wine are bound to.
std::vector<in_addr> loopbackTargets() {
    in_addr broadcast = {};
    broadcast.s_addr = htonl(INADDR_LOOPBACK | IN_CLASSA_HOST);
    return {loopbackBroadcast(), broadcast};
}

}  // namespace orvelle
