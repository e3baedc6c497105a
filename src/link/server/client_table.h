#pragma once

#include "link/server/server_client.h"

namespace orvelle {

/// The clients of a server that are logged in. Any thread.
class ClientTable {
public:
    /// Null when the table is full or the token is known already; then `control` is untouched.
    std::shared_ptr<ServerClient> add(uint64_t token, SrtSocket& control);
    void remove(int id);

    std::shared_ptr<ServerClient> find(int id) const;
    std::shared_ptr<ServerClient> findByToken(uint64_t token) const;
    std::vector<std::shared_ptr<ServerClient>> all() const;
    bool isFull() const { return count() >= kMaxLinkClients; }
    int count() const;

private:
    mutable std::mutex m_mutex;  ///< guards the fields below
    int m_nextId = 1;
    std::map<int, std::shared_ptr<ServerClient>> m_clients;
};

}  // namespace orvelle
