#include "link/server/search_responder.h"

#include "link/transport/srt_socket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <utility>

namespace orvelle {

namespace {

constexpr int kMaxAnswersInARow = 32;

}  // namespace

SearchResponder::SearchResponder(std::string uid, std::string deviceName, uint16_t linkPort)
    : m_uid(std::move(uid)), m_deviceName(std::move(deviceName)), m_linkPort(linkPort) {}

SearchResponder::~SearchResponder() {
    if (m_socket >= 0)
        close(m_socket);
}

bool SearchResponder::open(uint16_t discoveryPort, bool isLoopbackOnly) {
    m_socket = socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int on = 1;
    // Bound to the loopback's broadcast address it hears searches of this machine only.
    const auto address = ipv4Address(isLoopbackOnly ? "127.255.255.255" : "0.0.0.0", discoveryPort);
    return m_socket >= 0 && setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
           setsockopt(m_socket, SOL_SOCKET, SO_REUSEPORT, &on, sizeof on) == 0 &&
           bind(m_socket, asSockaddr(*address), sizeof *address) == 0;
}

void SearchResponder::answerWaiting() {
    uint8_t buffer[kSearchBytes + 1];  // one more shows that a datagram is too long
    for (int i = 0; i < kMaxAnswersInARow; ++i) {
        sockaddr_in from{};
        socklen_t fromBytes = sizeof from;
        const ssize_t size = recvfrom(m_socket, buffer, sizeof buffer, 0,
                                      reinterpret_cast<sockaddr*>(&from), &fromBytes);
        if (size < 0)
            return;
        const auto query = decodeSearchQuery(buffer, static_cast<size_t>(size));
        if (!query || (!query->uid.empty() && query->uid != m_uid))
            continue;
        const SearchDatagram answer =
            encodeSearchAnswer({query->nonce, m_uid, m_linkPort, m_deviceName});
        // An answer that cannot be sent is repeated at the asker's next query.
        [[maybe_unused]] const ssize_t sent =
            sendto(m_socket, answer.data(), answer.size(), 0, asSockaddr(from), fromBytes);
    }
}

}  // namespace orvelle
