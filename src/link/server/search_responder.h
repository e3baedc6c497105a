#pragma once

#include "link/wire/wire.h"
#include "platform/datagram_socket.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvelle {

/// Answers searches of the local network on the discovery port, which several cameras of one
/// host share, and on the link's own port. Used by the gate's thread only.
class SearchResponder {
public:
    SearchResponder(std::string uid, std::string deviceName, uint16_t linkPort);

    /// False when the port cannot be had; the camera is then found by its address only.
    bool open(uint16_t discoveryPort, bool isLoopbackOnly);
    const DatagramSocket& socket() const { return m_socket; }

    /// The answer to a query that came to the link's port, which names the camera whatever UID was
    /// asked for; nothing for what is no query.
    std::optional<SearchDatagram> answerTo(const uint8_t* data, size_t size) const;
    /// Answers every query that waits on the discovery port, up to a bound.
    void answerWaiting();

private:
    const std::string m_uid;
    const std::string m_deviceName;
    const uint16_t m_linkPort;
    DatagramSocket m_socket;
};

}  // namespace orvelle
