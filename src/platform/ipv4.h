#pragma once

/// The system's own types and calls for IPv4 addresses and sockets.

#ifdef _WIN32
#include <winsock2.h>

#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#endif
