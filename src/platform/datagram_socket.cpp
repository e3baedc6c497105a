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

bool DatagramSocket::send(const void* bytes, size_t size, const sockaddr_in& to) {
    return sendto(m_descriptor, static_cast<const char*>(bytes), static_cast<int>(size), 0,
                  reinterpret_cast<const sockaddr*>(&to), sizeof to) >= 0;
}

}  // namespace orvelle
