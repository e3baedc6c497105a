#include "link/server/client_table.h"

#include <algorithm>
#include <utility>

namespace orvelle {

ClientTable::Reservation ClientTable::reserve(const AdmittedSession& session, int64_t untilMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_reserved.count(session.token) > 0 || findByTokenLocked(session.token))
        return Reservation::TokenInUse;
    if (m_clients.size() + m_reserved.size() >= kMaxLinkClients)
        return Reservation::Full;
    m_reserved[session.token] = {session, untilMs};
    return Reservation::Done;
}

void ClientTable::unreserve(uint64_t token) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_reserved.erase(token);
}

void ClientTable::expireReservations(int64_t nowMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (auto it = m_reserved.begin(); it != m_reserved.end();)
        it = nowMs >= it->second.untilMs ? m_reserved.erase(it) : std::next(it);
}

std::optional<AdmittedSession> ClientTable::sessionOf(uint64_t token) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto reserved = m_reserved.find(token);
    if (reserved != m_reserved.end())
        return reserved->second.session;
    const auto client = findByTokenLocked(token);
    return client ? std::optional(client->session()) : std::nullopt;
}

bool ClientTable::isPeerInUse(const sockaddr_in& peer) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return std::any_of(
               m_reserved.begin(), m_reserved.end(),
               [&](const auto& entry) { return isSameAddress(entry.second.session.peer, peer); }) ||
           std::any_of(m_clients.begin(), m_clients.end(), [&](const auto& entry) {
               return isSameAddress(entry.second->session().peer, peer);
           });
}

std::shared_ptr<ServerClient> ClientTable::add(uint64_t token,
                                               std::shared_ptr<SealedSocket> control) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto reserved = m_reserved.find(token);
    if (reserved == m_reserved.end())
        return nullptr;
    const int id = m_nextId++;
    auto client = std::make_shared<ServerClient>(id, reserved->second.session, std::move(control));
    m_reserved.erase(reserved);
    m_clients[id] = client;
    return client;
}

void ClientTable::remove(int id) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_clients.erase(id);
}

std::shared_ptr<ServerClient> ClientTable::find(int id) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_clients.find(id);
    return found == m_clients.end() ? nullptr : found->second;
}

std::shared_ptr<ServerClient> ClientTable::findByToken(uint64_t token) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return findByTokenLocked(token);
}

std::shared_ptr<ServerClient> ClientTable::findByTokenLocked(uint64_t token) const {
    const auto found = std::find_if(m_clients.begin(), m_clients.end(), [token](const auto& entry) {
        return entry.second->session().token == token;
    });
    return found == m_clients.end() ? nullptr : found->second;
}

std::vector<std::shared_ptr<ServerClient>> ClientTable::all() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::shared_ptr<ServerClient>> clients;
    for (const auto& entry : m_clients)
        clients.push_back(entry.second);
    return clients;
}

int ClientTable::count() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(m_clients.size());
}

}  // namespace orvelle
