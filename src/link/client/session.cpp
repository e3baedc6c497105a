#include "link/client/session.h"

#include "link/client/channel.h"

#include <algorithm>

namespace orvelle {

void ClientSession::bind(const std::string& uid, const sockaddr_in& address) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_isBound = true;
    m_uid = uid;
    m_address = address;
}

bool ClientSession::isBound() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_isBound;
}

std::string ClientSession::uid() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_uid;
}

sockaddr_in ClientSession::address() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_address;
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
