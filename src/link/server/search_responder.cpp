#include "link/server/search_responder.h"

#include <utility>

namespace orvelle {

namespace {

constexpr int kMaxAnswersInARow = 32;

}  // namespace

SearchResponder::SearchResponder(std::string uid, std::string deviceName, uint16_t linkPort)
    : m_uid(std::move(uid)), m_deviceName(std::move(deviceName)), m_linkPort(linkPort) {}

bool SearchResponder::open(uint16_t discoveryPort, bool isLoopbackOnly) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(discoveryPort);
    // Bound to the loopback's broadcast address it hears searches of this machine only.
    if (isLoopbackOnly)
        address.sin_addr = loopbackBroadcast();
    return m_socket.bindShared(address);
}

std::optional<SearchDatagram> SearchResponder::answerTo(const uint8_t* data, size_t size) const {
    const auto query = decodeSearchQuery(data, size);
    if (!query)
        return std::nullopt;
    return encodeSearchAnswer({query->nonce, m_uid, m_linkPort, m_deviceName, kProtocolVersion});
}

void SearchResponder::answerWaiting() {
    uint8_t buffer[kSearchBytes + 1];  // one more shows that a datagram is too long
    for (int i = 0; i < kMaxAnswersInARow; ++i) {
        sockaddr_in from{};
        const int size = m_socket.receive(buffer, sizeof buffer, from);
        if (size < 0)
            return;
        const auto query = decodeSearchQuery(buffer, static_cast<size_t>(size));
        if (!query || (!query->uid.empty() && query->uid != m_uid))
            continue;
        const auto answer = answerTo(buffer, static_cast<size_t>(size));
        // An answer that cannot be sent is repeated at the asker's next query.
        [[maybe_unused]] const bool isSent = m_socket.send(answer->data(), answer->size(), from);
    }
}

}  // namespace orvelle
