#include "link/client/session.h"

#include "link/client/channel.h"

#include <algorithm>
#include <utility>

namespace orvelle {

void ClientSession::bind(const std::string& uid, std::unique_ptr<CameraSearch> search) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_uid = uid;
    m_candidates = search->candidates();
    m_search = std::move(search);
    m_proof.reset();
}

bool ClientSession::isBound() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return !m_candidates.empty();
}

std::string ClientSession::uid() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_uid;
}

sockaddr_in ClientSession::address() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_proof)
        return m_proof->camera;
    return m_candidates.empty() ? sockaddr_in{} : m_candidates.front();
}

std::unique_ptr<CameraSearch> ClientSession::takeSearch() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return std::move(m_search);
}

std::vector<sockaddr_in> ClientSession::candidates() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_candidates;
}

void ClientSession::prove(const Proof& proof) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_proof = proof;
}

std::optional<ClientSession::Proof> ClientSession::proof() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_proof;
}

void ClientSession::abort() {
    m_aborted = true;
    for (const auto& channel : channels())
        channel->wake();
}

void ClientSession::interrupt() {
    ++m_interruptions;
    for (const auto& channel : channels())
        channel->wake();
}

bool ClientSession::canOpen(int channelNumber) const {
    const auto open = channels();
    const auto isOpen = [&open](int number) {
        return std::any_of(open.begin(), open.end(), [number](const auto& channel) {
            return channel->number() == number && channel->endReason() == 0;
        });
    };
    return !isOpen(channelNumber) && (channelNumber == 0 || isOpen(0));
}

void ClientSession::addChannel(const std::shared_ptr<ClientChannel>& channel) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto isGone = [](const auto& weak) { return weak.expired(); };
    m_channels.erase(std::remove_if(m_channels.begin(), m_channels.end(), isGone),
                     m_channels.end());
    m_channels.push_back(channel);
}

std::vector<std::shared_ptr<ClientChannel>> ClientSession::channels() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::shared_ptr<ClientChannel>> alive;
    for (const auto& weak : m_channels) {
        if (auto channel = weak.lock())
            alive.push_back(std::move(channel));
    }
    return alive;
}

}  // namespace orvelle
