#include "link/client/receiver.h"

#include "link/clock.h"
#include "link/link_log.h"
#include "link/result_codes.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr int64_t kPingIntervalMs = 1000;
constexpr int64_t kSilenceMs = 3000;
// However much arrives that cannot be opened yet: on a path that only repeats itself it never can.
constexpr int64_t kLongestSilenceMs = 10'000;
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
                    [this] { return isStopped() || !m_readings.empty() || !m_closing.isEmpty(); });
}

void ClientReceiver::add(const std::shared_ptr<ClientChannel>& channel) {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& socket : channel->sockets()) {
        m_readings[socket->id()] = {channel, socket};
        m_epoll.watch(socket->id(), SRT_EPOLL_IN | SRT_EPOLL_ERR);
    }
    m_workCame.notify_all();
}

void ClientReceiver::forget(ClientChannel& channel) {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const SRTSOCKET socket : {channel.controlId(), channel.mediaId()}) {
        if (m_readings.erase(socket) > 0)
            m_epoll.forget(socket);
    }
}

void ClientReceiver::closeOrderly(ClientChannel& channel, int reason) {
    const bool isPeerThere = channel.endReason() == 0;
    forget(channel);
    channel.end(reason);
    for (auto& socket : channel.takeSockets()) {
        if (isPeerThere)
            m_closing.sayGoodbye(std::move(socket), 0);
        else
            socket->close();
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    m_workCame.notify_all();
}

void ClientReceiver::drain(SRTSOCKET socket) {
    Reading reading;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_readings.find(socket);
        if (found != m_readings.end())
            reading = found->second;
    }
    if (!reading.channel) {
        m_epoll.forget(socket);
        return;
    }
    for (int i = 0; i < kMaxMessagesInARow; ++i) {
        if (!readOne(reading))
            return;
    }
}

bool ClientReceiver::readOne(const Reading& reading) {
    ClientChannel& channel = *reading.channel;
    EncodedMessage bytes;
    switch (reading.socket->receive(&bytes)) {
        case SealedSocket::Received::Opened:
            break;
        case SealedSocket::Received::Nothing:
            return false;
        case SealedSocket::Received::Broken:
            // Whoever wants to leave says so under seal; the transport alone proves nothing.
            endChannel(channel, AV_ER_REMOTE_TIMEOUT_DISCONNECT);
            return false;
        case SealedSocket::Received::Forged:
            qCWarning(lcLink, "session %d: a message was changed on its way, cut off",
                      channel.session().sid());
            endChannel(channel, LINK_ER_PROTOCOL);
            return false;
    }
    channel.session().noteHeard(steadyMilliseconds());
    switch (channel.accept(bytes)) {
        case ClientChannel::Outcome::Fine:
            return true;
        case ClientChannel::Outcome::Goodbye:
            endChannel(channel, AV_ER_SESSION_CLOSE_BY_REMOTE);
            return false;
        case ClientChannel::Outcome::Broken:
            break;
    }
    qCWarning(lcLink, "session %d: %zu bytes from the camera break the protocol, cut off",
              channel.session().sid(), bytes.size);
    endChannel(channel, LINK_ER_PROTOCOL);
    return false;
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
        for (const auto& socket : other->takeSockets())
            socket->close();
    }
}

void ClientReceiver::tick(int64_t nowMs) {
    std::vector<Reading> sessions;  // by their control sockets
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto& [socket, reading] : m_readings) {
            if (socket == reading.channel->controlId())
                sessions.push_back(reading);
        }
    }
    const EncodedMessage ping = encodeMessage(PingMessage{static_cast<uint32_t>(nowMs)});
    for (const auto& [channel, socket] : sessions) {
        const int64_t silentMs = nowMs - channel->session().lastHeardMs();
        if (silentMs >= kLongestSilenceMs || (silentMs >= kSilenceMs && !channel->hasDataArrived()))
            endChannel(*channel, AV_ER_REMOTE_TIMEOUT_DISCONNECT);
        else
            socket->send(ping);
    }
}

}  // namespace orvelle
