#include "link/server/server_client.h"

#include "link/clock.h"
#include "link/result_codes.h"

#include <utility>

namespace orvelle {

ServerClient::ServerClient(int id, const AdmittedSession& session,
                           std::shared_ptr<SealedSocket> control)
    : m_id(id),
      m_session(session),
      m_lastHeardMs(steadyMilliseconds()),
      m_control(std::move(control)) {}

int ServerClient::send(const Message& message) {
    std::shared_ptr<SealedSocket> control;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        control = m_control;
    }
    if (!control)
        return AV_ER_INVALID_ARG;
    switch (control->send(encodeMessage(message))) {
        case SendResult::Sent:
            return 0;
        case SendResult::Full:
            return IOTC_ER_TIMEOUT;
        case SendResult::Broken:
            break;
    }
    return AV_ER_INVALID_ARG;
}

bool ServerClient::openChannel(int number, std::shared_ptr<SealedSocket> socket,
                               int64_t nominalBitsPerSecond, ServerCounters& counters) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_channels.count(number) > 0)
        return false;
    // The welcome goes first and under the lock, so that no frame overtakes it and whoever saw it
    // finds the channel open.
    if (socket->send(encodeMessage(WelcomeMessage{})) != SendResult::Sent)
        return false;
    const auto kind = number == 0 ? MediaQueue::Kind::kLive : MediaQueue::Kind::kRecording;
    m_channels[number] =
        std::make_shared<ServerChannel>(std::move(socket), nominalBitsPerSecond, counters, kind);
    return true;
}

void ServerClient::closeChannel(int number) {
    std::shared_ptr<ServerChannel> closing;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_channels.find(number);
        if (found == m_channels.end())
            return;
        closing = std::move(found->second);
        m_channels.erase(found);
    }
    closing->socket()->close();
}

std::shared_ptr<ServerChannel> ServerClient::channel(int number) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_channels.find(number);
    return found == m_channels.end() ? nullptr : found->second;
}

std::vector<std::shared_ptr<ServerChannel>> ServerClient::channels() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::shared_ptr<ServerChannel>> open;
    for (const auto& entry : m_channels)
        open.push_back(entry.second);
    return open;
}

std::vector<std::shared_ptr<SealedSocket>> ServerClient::takeSockets() {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::shared_ptr<SealedSocket>> sockets;
    for (const auto& entry : m_channels)
        sockets.push_back(entry.second->socket());
    m_channels.clear();
    if (m_control)
        sockets.push_back(std::move(m_control));
    return sockets;
}

}  // namespace orvelle
