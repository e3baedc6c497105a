#pragma once

#include "link/wire/wire.h"
#include "platform/datagram_socket.h"

#include <optional>
#include <string>

namespace orvelle {

/// A camera that answered a query on the local network.
struct LanAnswer {
    std::string uid;
    std::string deviceName;
    sockaddr_in address{};  ///< of its link port
    uint8_t version = 0;
};

/// One running search of the local network: sends the query to every network that is up, three
/// times quickly, since datagrams get lost, then now and then, since cameras come up; and collects
/// answers. One thread.
class LanQuery {
public:
    /// An empty UID asks every camera. Without a usable socket the query just stays unanswered.
    /// `direct`: one more address to ask, which may answer with another UID.
    explicit LanQuery(const std::string& uid, const std::optional<sockaddr_in>& direct = {});

    bool isOpen() const { return m_socket.isOpen(); }
    /// Sends what is due, then waits up to `waitMs` for one answer.
    std::optional<LanAnswer> next(int waitMs);
    /// False when the last query could go to this machine only, as no network is up.
    bool wasNetworkUp() const { return m_wasNetworkUp; }
    /// Asks an address whether a camera of version 1 is there; next() tells.
    void probeForVersionOne(const sockaddr_in& address);

private:
    void sendDueQueries();
    std::optional<LanAnswer> decode(const uint8_t* data, size_t size, sockaddr_in from) const;

    const SearchQuery m_query;
    const std::optional<sockaddr_in> m_direct;
    DatagramSocket m_socket;
    bool m_wasNetworkUp = true;
    int m_queriesSent = 0;
    int64_t m_nextQueryMs = 0;
};

}  // namespace orvelle
