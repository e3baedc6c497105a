#pragma once

#include "platform/datagram_socket.h"

#include <cstdint>
#include <string>

namespace orvelle {

/// Answers searches of the local network on the discovery port, which several cameras of one
/// host share. Owner and only user: the server's own thread.
class SearchResponder {
public:
    SearchResponder(std::string uid, std::string deviceName, uint16_t linkPort);

    /// False when the port cannot be had; the camera is then found by its address only.
    bool open(uint16_t discoveryPort, bool isLoopbackOnly);
    const DatagramSocket& socket() const { return m_socket; }

    /// Answers every query that waits, up to a bound.
    void answerWaiting();

private:
    const std::string m_uid;
    const std::string m_deviceName;
    const uint16_t m_linkPort;
    DatagramSocket m_socket;
};

}  // namespace orvelle
