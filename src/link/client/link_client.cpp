#include "link/client/link_client.h"

#include "link/crypto/cpace.h"
#include "link/environment.h"
#include "link/result_codes.h"

#include <algorithm>

namespace orvelle {

namespace {

// Sids and indices count up through this range, so that one is not given out again soon.
constexpr int kHandleRange = 1 << 30;
constexpr int kSearchSliceMs = 10;
constexpr size_t kMaxLastCameras = 256;

template <class Map>
typename Map::mapped_type findIn(const Map& map, int key) {
    const auto found = map.find(key);
    return found == map.end() ? nullptr : found->second;
}

}  // namespace

LinkClient& LinkClient::instance() {
    static LinkClient client;
    return client;
}

/// SRT's own statics come first, so that they outlive this object at the end of the process.
LinkClient::LinkClient() {
    const SrtLibrary library;
}

LinkClient::~LinkClient() {
    shutDown();
}

int LinkClient::start(uint16_t udpPort) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_library)
        return 0;
    if (!startCrypto())
        return LINK_ER_NETWORK;
    m_library = std::make_unique<SrtLibrary>();
    m_wishedPort = udpPort;
    m_receiver = std::make_shared<ClientReceiver>();
    m_receiver->start();
    return 0;
}

int LinkClient::setMaxChannels(int maxChannels) {
    if (maxChannels < 1)
        return AV_ER_INVALID_ARG;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_maxChannels = std::min(maxChannels, kMaxLinkChannels);
    return m_maxChannels;
}

void LinkClient::shutDown() {
    std::vector<int> sids;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto& entry : m_sessions)
            sids.push_back(entry.first);
    }
    for (const int sid : sids)
        closeSession(sid);

    std::unique_ptr<SrtLibrary> library;  // goes last
    std::shared_ptr<ClientReceiver> receiver;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        receiver = std::move(m_receiver);
        library = std::move(m_library);
    }
    if (!receiver)
        return;
    receiver->stop();
    receiver->waitForEnd();
}

int LinkClient::openSession() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_library)
        return LINK_ER_NOT_INITIALIZED;
    if (m_sessions.size() >= kMaxLinkSessions)
        return LINK_ER_NO_FREE_SESSION;
    const int sid = m_nextSid;
    m_nextSid = (m_nextSid + 1) % kHandleRange;
    m_sessions[sid] = std::make_shared<ClientSession>(sid);
    return sid;
}

std::shared_ptr<ClientSession> LinkClient::session(int sid) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return findIn(m_sessions, sid);
}

int LinkClient::find(const std::string& uid, int sid) {
    const auto bound = session(sid);
    if (!bound)
        return IOTC_ER_INVALID_SID;
    if (!isValidUid(uid))
        return LINK_ER_BAD_UID;
    const uint32_t interruptions = bound->interruptions();
    auto search = std::make_unique<CameraSearch>(uid);
    while (search->candidates().empty()) {
        if (bound->isAborted() || bound->interruptions() != interruptions)
            return LINK_ER_ABORTED;
        if (search->isOver())
            return search->failure();
        search->step(kSearchSliceMs);
    }
    bound->bind(uid, std::move(search));
    return sid;
}

void LinkClient::closeSession(int sid) {
    std::shared_ptr<ClientSession> closing;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        closing = findIn(m_sessions, sid);
        m_sessions.erase(sid);
    }
    if (!closing)
        return;
    closing->abort();
    for (const auto& channel : closing->channels())
        closeChannel(channel, IOTC_ER_INVALID_SID);
}

std::shared_ptr<LocalPort> LinkClient::localPort() {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto port = m_localPort.lock();
    if (port || !m_library)
        return port;
    port = std::make_shared<LocalPort>();
    if (!port->open(m_wishedPort))
        return nullptr;
    m_localPort = port;
    return port;
}

// A configured address is the user's word about where the camera is.
std::optional<sockaddr_in> LinkClient::lastCamera(const std::string& uid) const {
    if (configuredCameraAddress(uid))
        return std::nullopt;
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto known = m_lastCameras.find(uid);
    return known == m_lastCameras.end() ? std::nullopt : std::optional(known->second);
}

void LinkClient::noteCamera(const ClientSession& session) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_lastCameras.size() >= kMaxLastCameras)
        m_lastCameras.clear();
    m_lastCameras[session.uid()] = session.address();
}

int LinkClient::openChannel(int sid, const std::string& account, const std::string& password,
                            int channelNumber, int64_t timeoutMs) {
    const auto on = session(sid);
    if (!on || !on->isBound())
        return IOTC_ER_INVALID_SID;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_maxChannels == 0)
            return LINK_ER_NOT_INITIALIZED;
        if (m_channels.size() >= static_cast<size_t>(m_maxChannels))
            return LINK_ER_NO_FREE_CHANNEL;
    }
    if (!on->canOpen(channelNumber))
        return LINK_ER_CHANNEL_IN_USE;
    const auto port = localPort();
    if (!port)
        return LINK_ER_NETWORK;
    const LoginResult login =
        logIn(on, account, password, channelNumber, timeoutMs, port, lastCamera(on->uid()));
    if (login.code != 0)
        return login.code;
    noteCamera(*on);
    return registerChannel(login.channel);
}

// The session may have been closed while the login ran, so it is looked at again under the lock.
int LinkClient::registerChannel(const std::shared_ptr<ClientChannel>& channel) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!findIn(m_sessions, channel->session().sid()) || !m_receiver)
        return LINK_ER_ABORTED;
    if (m_channels.size() >= static_cast<size_t>(m_maxChannels))
        return LINK_ER_NO_FREE_CHANNEL;
    const int index = m_nextIndex;
    m_nextIndex = (m_nextIndex + 1) % kHandleRange;
    m_channels[index] = channel;
    channel->session().addChannel(channel);
    m_receiver->add(channel);
    return index;
}

std::shared_ptr<ClientChannel> LinkClient::channel(int avIndex) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return findIn(m_channels, avIndex);
}

void LinkClient::closeChannel(int avIndex) {
    if (const auto closing = channel(avIndex))
        closeChannel(closing, AV_ER_INVALID_ARG);
}

void LinkClient::closeChannel(const std::shared_ptr<ClientChannel>& channel, int reason) {
    std::shared_ptr<ClientReceiver> receiver;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (auto it = m_channels.begin(); it != m_channels.end();)
            it = it->second == channel ? m_channels.erase(it) : std::next(it);
        receiver = m_receiver;
    }
    if (receiver)
        receiver->closeOrderly(*channel, reason);
}

}  // namespace orvelle
