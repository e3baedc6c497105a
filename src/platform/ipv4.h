#pragma once

/// The system's own types and calls for IPv4 addresses and sockets, and what compares them.

#ifdef _WIN32
#include <winsock2.h>

#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#endif

namespace orvelle {

inline bool isSameHost(const sockaddr_in& a, const sockaddr_in& b) {
    return a.sin_addr.s_addr == b.sin_addr.s_addr;
}

inline bool isSameAddress(const sockaddr_in& a, const sockaddr_in& b) {
    return isSameHost(a, b) && a.sin_port == b.sin_port;
}

}  // namespace orvelle
