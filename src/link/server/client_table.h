#pragma once

#include "link/server/server_client.h"

namespace orvelle {

/// The places of a server's clients: those that are logged in, and those whose password was proved
/// and whose sockets are on their way. Any thread.
class ClientTable {
public:
    enum class Reservation { Done, Full, TokenInUse };
    /// Keeps a place until `untilMs`.
    Reservation reserve(const AdmittedSession& session, int64_t untilMs);
    void unreserve(uint64_t token);
    /// Gives up places whose time has passed.
    void expireReservations(int64_t nowMs);
    /// Of a reserved place or a logged-in client.
    std::optional<AdmittedSession> sessionOf(uint64_t token) const;
    /// Whether a session's sockets come from there.
    bool isPeerInUse(const sockaddr_in& peer) const;

    /// Turns the reserved place into a client; null when there is none.
    std::shared_ptr<ServerClient> add(uint64_t token, std::shared_ptr<SealedSocket> control);
    void remove(int id);

    std::shared_ptr<ServerClient> find(int id) const;
    std::shared_ptr<ServerClient> findByToken(uint64_t token) const;
    std::vector<std::shared_ptr<ServerClient>> all() const;
    int count() const;

private:
    struct Place {
        AdmittedSession session;
        int64_t untilMs = 0;
    };

    std::shared_ptr<ServerClient> findByTokenLocked(uint64_t token) const;

    mutable std::mutex m_mutex;  ///< guards the fields below
    int m_nextId = 1;
    std::map<int, std::shared_ptr<ServerClient>> m_clients;
    std::map<uint64_t, Place> m_reserved;  ///< by token
};

}  // namespace orvelle
