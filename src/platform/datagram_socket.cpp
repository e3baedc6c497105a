#include "platform/datagram_socket.h"

namespace orvelle {

bool DatagramSocket::setOption(int option) {
    const int on = 1;
    return setsockopt(m_descriptor, SOL_SOCKET, option, reinterpret_cast<const char*>(&on),
                      sizeof on) == 0;
}

bool DatagramSocket::allowBroadcast() {
    return setOption(SO_BROADCAST);
}

uint16_t DatagramSocket::port() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    const bool isKnown =
        getsockname(m_descriptor, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    return isKnown ? ntohs(address.sin_port) : uint16_t{0};
}

bool DatagramSocket::send(const void* bytes, size_t size, const sockaddr_in& to) {
    return sendOn(m_descriptor, bytes, size, to);
}

bool DatagramSocket::sendOn(Descriptor descriptor, const void* bytes, size_t size,
                            const sockaddr_in& to) {
    return sendto(descriptor, static_cast<const char*>(bytes), static_cast<int>(size), 0,
                  reinterpret_cast<const sockaddr*>(&to), sizeof to) >= 0;
}

}  // namespace orvelle
