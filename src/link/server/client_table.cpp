#include "link/server/client_table.h"

#include <algorithm>
#include <utility>

namespace orvelle {

std::shared_ptr<ServerClient> ClientTable::add(uint64_t token, SrtSocket& control) {
    if (findByToken(token))
        return nullptr;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_clients.size() >= kMaxLinkClients)
        return nullptr;
    const int id = m_nextId++;
    auto client = std::make_shared<ServerClient>(id, token, std::move(control));
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
    const auto found = std::find_if(m_clients.begin(), m_clients.end(), [token](const auto& entry) {
        return entry.second->token() == token;
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
