#include "link/client/receiver.h"

#include "link/clock.h"
#include "link/link_log.h"
#include "link/result_codes.h"

#include <algorithm>
#include <set>

namespace orvelle {

namespace {

constexpr int64_t kPingIntervalMs = 1000;
constexpr int64_t kSilenceMs = 3000;
constexpr int kMaxWaitMs = 100;
constexpr int kClosingWaitMs = 10;
constexpr int kMaxEvents = 64;
constexpr int kMaxMessagesInARow = 256;  // then the other sockets get their turn

}  // namespace

ClientReceiver::ClientReceiver() : KvThread(QStringLiteral("link-client")) {}

void ClientReceiver::run() {
    SRT_EPOLL_EVENT events[kMaxEvents];
    int64_t nextTickMs = steadyMilliseconds();
    while (!isStopped()) {
        waitForWork();
        const int wait = m_closing.isEmpty() ? kMaxWaitMs : kClosingWaitMs;
        const int count = srt_epoll_uwait(m_epoll.id(), events, kMaxEvents, wait);
        for (int i = 0; i < std::min(count, kMaxEvents); ++i)
            drain(events[i].fd);
        const int64_t nowMs = steadyMilliseconds();
        m_closing.collect(nowMs);
        if (nowMs >= nextTickMs) {
            tick(nowMs);
            nextTickMs = nowMs + kPingIntervalMs;
        }
    }
    m_closing.finish();
}

void ClientReceiver::stop() {
    KvThread::stop();
    std::lock_guard<std::mutex> lock(m_mutex);
    m_workCame.notify_all();
}

void ClientReceiver::waitForWork() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_workCame.wait(lock,
                    [this] { return isStopped() || !m_channels.empty() || !m_closing.isEmpty(); });
}

void ClientReceiver::add(const std::shared_ptr<ClientChannel>& channel) {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const SRTSOCKET socket : {channel->controlId(), channel->mediaId()}) {
        if (socket == SRT_INVALID_SOCK)
            continue;
        m_channels[socket] = channel;
        m_epoll.watch(socket, SRT_EPOLL_IN | SRT_EPOLL_ERR);
    }
    m_workCame.notify_all();
}

void ClientReceiver::forget(ClientChannel& channel) {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const SRTSOCKET socket : {channel.controlId(), channel.mediaId()}) {
        if (m_channels.erase(socket) > 0)
            m_epoll.forget(socket);
    }
}

void ClientReceiver::closeOrderly(ClientChannel& channel, int reason) {
    const bool isPeerThere = channel.endReason() == 0;
    forget(channel);
    channel.end(reason);
    for (SrtSocket& socket : channel.takeSockets()) {
        if (isPeerThere)
            m_closing.sayGoodbye(std::move(socket), 0);
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    m_workCame.notify_all();
}

void ClientReceiver::drain(SRTSOCKET socket) {
    std::shared_ptr<ClientChannel> channel;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_channels.find(socket);
        if (found != m_channels.end())
            channel = found->second;
    }
    if (!channel) {
        m_epoll.forget(socket);
        return;
    }
    for (int i = 0; i < kMaxMessagesInARow; ++i) {
        if (!readOne(*channel, socket))
            return;
    }
}

bool ClientReceiver::readOne(ClientChannel& channel, SRTSOCKET socket) {
    char buffer[kMaxMessageBytes];
    const int size = srt_recvmsg(socket, buffer, sizeof buffer);
    if (size < 0) {
        if (srt_getlasterror(nullptr) != SRT_EASYNCRCV)
            socketBroke(channel);
        return false;
    }
    channel.session().noteHeard(steadyMilliseconds());
    const auto* bytes = reinterpret_cast<const uint8_t*>(buffer);
    switch (channel.accept(bytes, static_cast<size_t>(size))) {
        case ClientChannel::Outcome::Fine:
            return true;
        case ClientChannel::Outcome::Goodbye:
            endChannel(channel, AV_ER_SESSION_CLOSE_BY_REMOTE);
            return false;
        case ClientChannel::Outcome::Broken:
            break;
    }
    qCWarning(lcLink, "session %d: %d bytes from the camera break the protocol, cut off",
              channel.session().sid(), size);
    endChannel(channel, LINK_ER_PROTOCOL);
    return false;
}

// The transport's own time-out is longer than ours, so a break while the camera was heard of
// lately means that it closed the socket without a word.
void ClientReceiver::socketBroke(ClientChannel& channel) {
    const bool wasHeard = steadyMilliseconds() - channel.session().lastHeardMs() < kSilenceMs;
    endChannel(channel, wasHeard ? AV_ER_SESSION_CLOSE_BY_REMOTE : AV_ER_REMOTE_TIMEOUT_DISCONNECT);
}

void ClientReceiver::endChannel(ClientChannel& channel, int reason) {
    std::vector<std::shared_ptr<ClientChannel>> ending;
    for (auto& other : channel.session().channels()) {
        if (channel.number() == 0 || other.get() == &channel)
            ending.push_back(std::move(other));
    }
    for (const auto& other : ending) {
        forget(*other);
        other->end(reason);
        other->takeSockets();
    }
}

void ClientReceiver::tick(int64_t nowMs) {
    std::set<std::shared_ptr<ClientChannel>> sessions;  // by their channel 0
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto& [socket, channel] : m_channels) {
            if (socket == channel->controlId())
                sessions.insert(channel);
        }
    }
    for (const auto& channel : sessions) {
        if (nowMs - channel->session().lastHeardMs() >= kSilenceMs && !channel->hasDataArrived())
            endChannel(*channel, AV_ER_REMOTE_TIMEOUT_DISCONNECT);
        else
            sendMessage(channel->controlId(),
                        encodeMessage(PingMessage{static_cast<uint32_t>(nowMs)}));
    }
}

}  // namespace orvelle
