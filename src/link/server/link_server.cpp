#include "link/server/link_server.h"

#include "core/wipe.h"
#include "link/clock.h"
#include "link/environment.h"
#include "link/limits.h"
#include "link/link_log.h"
#include "link/result_codes.h"
#include "link/server/feeder_thread.h"
#include "link/server/gate_thread.h"
#include "link/server/service_thread.h"

#include <chrono>
#include <thread>
#include <utility>

namespace orvelle {

namespace {

constexpr int64_t kPortWaitMs = 1000;
constexpr std::chrono::milliseconds kPortRetry{10};

}  // namespace

class LinkServer::Impl {
public:
    Impl(LinkServerConfig config, LinkServerListener* listener);

    int start();
    void stop();
    uint16_t port() const { return m_port; }

    std::shared_ptr<ServerChannel> channel(int clientId, int number) const {
        const auto client = m_clients.find(clientId);
        return client ? client->channel(number) : nullptr;
    }
    int sendControl(int clientId, uint32_t type, const void* data, size_t size);
    int sendFrame(bool isVideo, int clientId, int channelNumber, const LinkFrameInfo& info,
                  SharedFrame frame);
    LinkServerStats stats() const;

private:
    bool bindGate(const sockaddr_in& address);
    void startThreads();

    LinkServerConfig m_config;  ///< fixed after construction, without the password
    LinkServerListener* const m_listener;
    /// What the password comes to; nothing without a password or without random numbers.
    std::optional<CpaceGenerator> m_generator;
    uint16_t m_port = 0;
    ClientTable m_clients;
    ServerCounters m_counters;

    // Set from start() to stop(); each needs those above it.
    std::unique_ptr<SrtLibrary> m_library;
    std::unique_ptr<DatagramSocket> m_socket;
    std::unique_ptr<SearchResponder> m_search;
    std::unique_ptr<PeerPorts> m_ports;
    std::mutex m_feederMutex;  // guards m_feeder against a send while stop() is under way
    std::unique_ptr<FeederThread> m_feeder;
    std::unique_ptr<ServiceThread> m_service;
    std::unique_ptr<GateThread> m_gate;
};

LinkServer::Impl::Impl(LinkServerConfig config, LinkServerListener* listener)
    : m_config(std::move(config)), m_listener(listener) {
    if (startCrypto() && !m_config.password.empty())
        m_generator.emplace(m_config.password, loginContext(m_config.uid, kLinkAccount));
    wipe(m_config.password);
}

int LinkServer::Impl::start() {
    if (m_service)
        return 0;
    if (!isValidUid(m_config.uid))
        return LINK_ER_BAD_UID;
    const std::string host = isLinkLoopbackOnly() ? "127.0.0.1" : m_config.bindAddress;
    const auto address = ipv4Address(host, m_config.port);
    if (!address || !m_generator)
        return AV_ER_INVALID_ARG;

    if (!bindGate(*address)) {
        qCWarning(lcLink, "cannot listen on %s:%d", host.c_str(), m_config.port);
        stop();
        return LINK_ER_NETWORK;
    }
    m_port = m_socket->port();
    m_search = std::make_unique<SearchResponder>(m_config.uid, m_config.deviceName, m_port);
    const bool isLoopback = (ntohl(address->sin_addr.s_addr) >> 24) == 127;
    const uint16_t searchPort = m_config.discoveryPort ? m_config.discoveryPort : discoveryPort();
    if (!m_search->open(searchPort, isLoopback))
        qCWarning(lcLink, "port %d is taken, the camera answers no search", searchPort);
    sockaddr_in gate = *address;
    gate.sin_port = htons(m_port);
    m_library = std::make_unique<SrtLibrary>();
    m_ports = std::make_unique<PeerPorts>(gate);
    startThreads();
    return 0;
}

// The transport may still wait on a port that was given up just now.
bool LinkServer::Impl::bindGate(const sockaddr_in& address) {
    const int64_t endMs = steadyMilliseconds() + (address.sin_port != 0 ? kPortWaitMs : 0);
    for (;;) {
        m_socket = std::make_unique<DatagramSocket>();
        if (m_socket->bindAsGate(address))
            return true;
        if (steadyMilliseconds() >= endMs)
            return false;
        std::this_thread::sleep_for(kPortRetry);
    }
}

void LinkServer::Impl::startThreads() {
    auto feeder = std::make_unique<FeederThread>(m_clients);
    feeder->start();
    m_service =
        std::make_unique<ServiceThread>(m_config, m_listener, m_clients, *m_ports, m_counters);
    {
        std::lock_guard<std::mutex> lock(m_feederMutex);
        m_feeder = std::move(feeder);
    }
    m_service->start();
    m_gate = std::make_unique<GateThread>(
        m_config.uid, *m_generator, *m_socket, *m_search, m_clients, *m_ports,
        [service = m_service.get()](SRTSOCKET listener) { service->watch(listener); });
    m_gate->start();
}

void LinkServer::Impl::stop() {
    KvThread::stopAndDelete(m_gate);
    KvThread::stopAndDelete(m_service);
    std::unique_ptr<FeederThread> feeder;
    {
        std::lock_guard<std::mutex> lock(m_feederMutex);
        feeder = std::move(m_feeder);
    }
    KvThread::stopAndDelete(feeder);
    m_ports.reset();
    m_search.reset();
    m_socket.reset();
    m_library.reset();
}

int LinkServer::Impl::sendControl(int clientId, uint32_t type, const void* data, size_t size) {
    if (size > kMaxControlBytes)
        return AV_ER_EXCEED_MAX_SIZE;
    const auto client = m_clients.find(clientId);
    if (!client || (size > 0 && !data))
        return AV_ER_INVALID_ARG;
    return client->send(ControlMessage{type, static_cast<const uint8_t*>(data), size});
}

int LinkServer::Impl::sendFrame(bool isVideo, int clientId, int channelNumber,
                                const LinkFrameInfo& info, SharedFrame frame) {
    const auto to = channel(clientId, channelNumber);
    if (!to || !frame || frame->empty())
        return AV_ER_INVALID_ARG;
    const size_t limit = isVideo ? kMaxVideoFrameBytes : kMaxAudioFrameBytes;
    if (frame->size() > limit) {
        if (isVideo)
            to->skipVideo();
        return AV_ER_EXCEED_MAX_SIZE;
    }
    const bool isTaken = isVideo ? to->pushVideo(info, std::move(frame), steadyMilliseconds())
                                 : to->pushAudio(info, std::move(frame), steadyMilliseconds());
    if (!isTaken)
        return IOTC_ER_TIMEOUT;
    std::lock_guard<std::mutex> lock(m_feederMutex);
    if (m_feeder)
        m_feeder->notify();
    return 0;
}

LinkServerStats LinkServer::Impl::stats() const {
    LinkServerStats stats;
    stats.videoFramesSent = m_counters.videoFramesSent;
    stats.videoFramesDropped = m_counters.videoFramesDropped;
    stats.audioFramesSent = m_counters.audioFramesSent;
    stats.clients = m_clients.count();
    return stats;
}

LinkServer::LinkServer(LinkServerConfig config, LinkServerListener* listener)
    : m_impl(std::make_unique<Impl>(std::move(config), listener)) {}

LinkServer::~LinkServer() {
    stop();
}

int LinkServer::start() {
    return m_impl->start();
}

void LinkServer::stop() {
    m_impl->stop();
}

uint16_t LinkServer::port() const {
    return m_impl->port();
}

int LinkServer::sendControl(int clientId, uint32_t type, const void* data, size_t size) {
    return m_impl->sendControl(clientId, type, data, size);
}

int LinkServer::sendVideo(int clientId, int channel, const LinkFrameInfo& info, SharedFrame frame) {
    return m_impl->sendFrame(true, clientId, channel, info, std::move(frame));
}

int LinkServer::sendAudio(int clientId, int channel, const LinkFrameInfo& info, SharedFrame frame) {
    return m_impl->sendFrame(false, clientId, channel, info, std::move(frame));
}

bool LinkServer::isChannelOpen(int clientId, int channel) const {
    return m_impl->channel(clientId, channel) != nullptr;
}

size_t LinkServer::waitingBytes(int clientId, int channel) const {
    const auto of = m_impl->channel(clientId, channel);
    return of ? of->waitingBytes() : 0;
}

LinkServerStats LinkServer::stats() const {
    return m_impl->stats();
}

}  // namespace orvelle
