#include "link/server/service_thread.h"

#include "link/clock.h"
#include "link/link_log.h"
#include "link/result_codes.h"

#include <algorithm>
#include <utility>

namespace orvelle {

namespace {

constexpr int64_t kTickMs = 250;
constexpr int64_t kSilenceMs = 3000;
constexpr int64_t kHelloMs = 5000;
constexpr int kMaxWaitMs = 100;
constexpr int kClosingWaitMs = 10;
constexpr int kMaxEvents = 128;
constexpr size_t kMaxPeers = 256;
constexpr int kMaxMessagesInARow = 64;  // then the other sockets get their turn

std::string streamIdOf(SRTSOCKET socket) {
    char text[513] = "";
    int size = sizeof text - 1;
    if (srt_getsockflag(socket, SRTO_STREAMID, text, &size) < 0 || size < 0)
        return {};
    return std::string(text, static_cast<size_t>(size));
}

}  // namespace

ServiceThread::ServiceThread(const LinkServerConfig& config, LinkServerListener* listener,
                             SRTSOCKET listeningSocket, ClientTable& clients,
                             SearchResponder& search, ServerCounters& counters)
    : KvThread(QStringLiteral("link-server")),
      m_nominalBitsPerSecond(config.nominalBitsPerSecond),
      m_listener(listener),
      m_listeningSocket(listeningSocket),
      m_clients(clients),
      m_search(search),
      m_counters(counters) {
    m_epoll.watch(m_listeningSocket, SRT_EPOLL_IN | SRT_EPOLL_ERR);
    const int readable = SRT_EPOLL_IN;
    if (m_search.socket().isOpen())
        srt_epoll_add_ssock(m_epoll.id(), m_search.socket().descriptor(), &readable);
}

void ServiceThread::run() {
    while (!isStopped()) {
        waitAndServe();
        const int64_t nowMs = steadyMilliseconds();
        m_closing.collect(nowMs);
        if (nowMs >= m_nextTickMs) {
            tick(nowMs);
            m_nextTickMs = nowMs + kTickMs;
        }
    }
    sayGoodbyeToAll();
}

void ServiceThread::waitAndServe() {
    SRTSOCKET ready[kMaxEvents];
    int readyCount = kMaxEvents;
    SYSSOCKET searches[1];
    int searchCount = 1;
    const int waitMs = m_closing.isEmpty() ? kMaxWaitMs : kClosingWaitMs;
    if (srt_epoll_wait(m_epoll.id(), ready, &readyCount, nullptr, nullptr, waitMs, searches,
                       &searchCount, nullptr, nullptr) < 0)
        return;
    if (searchCount > 0)
        m_search.answerWaiting();
    for (int i = 0; i < std::min(readyCount, kMaxEvents); ++i) {
        if (ready[i] == m_listeningSocket)
            acceptAll();
        else
            readAll(ready[i]);
    }
}

void ServiceThread::acceptAll() {
    for (;;) {
        SrtSocket socket(srt_accept(m_listeningSocket, nullptr, nullptr));
        if (!socket.isOpen())
            return;
        const auto request = decodeStreamId(streamIdOf(socket.id()));
        if (!request || m_peers.size() >= kMaxPeers)
            continue;
        const SRTSOCKET id = socket.id();
        m_epoll.watch(id, SRT_EPOLL_IN | SRT_EPOLL_ERR);
        m_peers[id] = {*request, steadyMilliseconds(), false, std::move(socket), nullptr};
    }
}

void ServiceThread::readAll(SRTSOCKET socket) {
    for (int i = 0; i < kMaxMessagesInARow; ++i) {
        if (!readOne(socket))
            return;
    }
}

// Whether there may be more to read.
bool ServiceThread::readOne(SRTSOCKET socket) {
    if (m_peers.count(socket) == 0) {
        m_epoll.forget(socket);
        return false;
    }
    char buffer[kMaxMessageBytes];
    const int size = srt_recvmsg(socket, buffer, sizeof buffer);
    if (size < 0) {
        if (srt_getlasterror(nullptr) != SRT_EASYNCRCV)
            socketBroke(socket);
        return false;
    }
    const auto message =
        decodeMessage(reinterpret_cast<const uint8_t*>(buffer), static_cast<size_t>(size));
    if (message)
        handle(socket, *message);
    else
        breakOff(socket, "malformed message");
    return true;
}

void ServiceThread::handle(SRTSOCKET socket, const Message& message) {
    const Peer& peer = m_peers[socket];
    const std::shared_ptr<ServerClient> client = peer.client;
    if (!client) {
        handleUnwelcomed(socket, message);
        return;
    }
    client->noteHeard(steadyMilliseconds());
    const bool isGoodbye = std::holds_alternative<ByeMessage>(message);
    if (peer.request.purpose == StreamPurpose::Media) {
        if (isGoodbye)
            closeMedia(socket);
        else
            breakOff(socket, "unexpected message on a media socket");
        return;
    }
    if (isGoodbye)
        dropClient(client, true);
    else if (std::holds_alternative<PingMessage>(message) ||
             std::holds_alternative<ControlMessage>(message))
        handleControl(*client, message);
    else
        breakOff(socket, "unexpected message");
}

void ServiceThread::handleControl(ServerClient& client, const Message& message) {
    if (const auto* ping = std::get_if<PingMessage>(&message)) {
        client.send(PongMessage{ping->token});
        return;
    }
    const auto& control = std::get<ControlMessage>(message);
    m_listener->controlReceived(client.id(), control.type, control.data, control.size);
}

void ServiceThread::handleUnwelcomed(SRTSOCKET socket, const Message& message) {
    if (const auto* greeting = std::get_if<HelloMessage>(&message))
        hello(socket, greeting->version);
    else
        breakOff(socket, "no HELLO");
}

void ServiceThread::hello(SRTSOCKET socket, uint8_t version) {
    Peer& peer = m_peers[socket];
    if (version != kProtocolVersion) {
        refuse(socket, LINK_ER_VERSION);
        return;
    }
    peer.saidHello = true;
    if (peer.request.purpose == StreamPurpose::Control)
        welcomeControl(socket);
    else
        welcomeMedia(socket);
}

// A session's sockets connect side by side, so its media may have said HELLO first.
void ServiceThread::welcomeControl(SRTSOCKET socket) {
    Peer& peer = m_peers[socket];
    const uint64_t token = peer.request.token;
    const auto client = m_clients.add(token, peer.socket);
    if (!client) {
        refuse(socket, m_clients.isFull() ? AV_ER_NO_PERMISSION : LINK_ER_CHANNEL_IN_USE);
        return;
    }
    peer.client = client;
    client->send(WelcomeMessage{});
    m_listener->clientConnected(client->id());
    std::vector<SRTSOCKET> waiting;
    for (const auto& [id, other] : m_peers) {
        if (!other.client && other.saidHello && other.request.token == token)
            waiting.push_back(id);
    }
    for (const SRTSOCKET id : waiting)
        welcomeMedia(id);
}

void ServiceThread::welcomeMedia(SRTSOCKET socket) {
    Peer& peer = m_peers[socket];
    const auto client = m_clients.findByToken(peer.request.token);
    if (!client)
        return;
    if (client->channel(peer.request.channel)) {
        refuse(socket, LINK_ER_CHANNEL_IN_USE);
        return;
    }
    peer.client = client;
    client->openChannel(peer.request.channel, std::move(peer.socket), m_nominalBitsPerSecond,
                        m_counters);
}

void ServiceThread::refuse(SRTSOCKET socket, int reason) {
    SrtSocket refused = std::move(m_peers[socket].socket);
    forget(socket);
    m_closing.sayGoodbye(std::move(refused), reason);
}

void ServiceThread::breakOff(SRTSOCKET socket, const char* why) {
    qCWarning(lcLink, "%s from a client, cut off", why);
    if (const std::shared_ptr<ServerClient> client = m_peers[socket].client)
        dropClient(client, false);
    else
        forget(socket);
}

void ServiceThread::socketBroke(SRTSOCKET socket) {
    const Peer& peer = m_peers[socket];
    if (!peer.client)
        forget(socket);
    else if (peer.request.purpose == StreamPurpose::Media)
        closeMedia(socket);
    else
        dropClient(std::shared_ptr<ServerClient>(peer.client), false);
}

void ServiceThread::closeMedia(SRTSOCKET socket) {
    const Peer& peer = m_peers[socket];
    const std::shared_ptr<ServerClient> client = peer.client;
    const int channel = peer.request.channel;
    forget(socket);
    client->closeChannel(channel);
}

void ServiceThread::forget(SRTSOCKET socket) {
    m_epoll.forget(socket);
    m_peers.erase(socket);
}

void ServiceThread::dropClient(const std::shared_ptr<ServerClient>& client, bool orderly) {
    for (auto it = m_peers.begin(); it != m_peers.end();) {
        if (it->second.client == client) {
            m_epoll.forget(it->first);
            it = m_peers.erase(it);
        } else {
            ++it;
        }
    }
    m_clients.remove(client->id());
    client->takeControl().close();
    m_listener->clientDisconnected(client->id(), orderly);
}

void ServiceThread::tick(int64_t nowMs) {
    for (const auto& client : m_clients.all()) {
        if (nowMs - client->lastHeardMs() >= kSilenceMs)
            dropClient(client, false);
    }
    std::vector<SRTSOCKET> silent;
    for (const auto& [socket, peer] : m_peers) {
        if (!peer.client && nowMs - peer.acceptedMs >= kHelloMs)
            silent.push_back(socket);
    }
    for (const SRTSOCKET socket : silent)
        forget(socket);
}

void ServiceThread::sayGoodbyeToAll() {
    m_peers.clear();
    const auto clients = m_clients.all();
    for (const auto& client : clients) {
        m_clients.remove(client->id());
        m_closing.sayGoodbye(client->takeControl(), 0);
    }
    m_closing.finish();
    for (const auto& client : clients)
        m_listener->clientDisconnected(client->id(), true);
}

}  // namespace orvelle
