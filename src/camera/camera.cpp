#include "camera/camera.h"

#include <utility>

#include "camera/camera_log.h"
#include "core/wipe.h"
#include "link/io_types.h"

namespace orvelle {

namespace {

constexpr int kLiveChannel = 0;

LinkServerConfig serverConfig(const CameraProfile& profile, const CameraAddress& address,
                              const Feed& feed) {
    LinkServerConfig config;
    config.uid = profile.uid.toStdString();
    config.password = address.password;
    config.deviceName = profile.name.toStdString();
    config.bindAddress = address.bindAddress;
    config.port = address.port;
    config.discoveryPort = address.discoveryPort;
    config.nominalBitsPerSecond = feed.format().bitsPerSecond;
    return config;
}

}  // namespace

Camera::Camera(CameraProfile profile, CameraAddress address, Feed* feed, PanTilt* panTilt,
               MemoryCard* card)
    : m_profile(std::move(profile)),
      m_feed(feed),
      m_panTilt(panTilt),
      m_card(card),
      m_commands(m_profile, static_cast<CameraActions*>(this)),
      m_server(std::make_unique<LinkServer>(serverConfig(m_profile, address, *feed),
                                            static_cast<LinkServerListener*>(this))),
      m_playbacks(m_server.get(), Playbacks::kWatching),
      m_downloads(m_server.get(), Playbacks::kDownloading) {
    wipe(address.password);
    m_feed->addSink(this);
}

Camera::~Camera() {
    stop();
}

int Camera::start() {
    return m_server->start();
}

// The server tells of each client that it is gone, which lets go of what the client held.
void Camera::stop() {
    m_server->stop();
    m_playbacks.stopAll();
    m_downloads.stopAll();
}

uint16_t Camera::port() const {
    return m_server->port();
}

LinkServerStats Camera::stats() const {
    return m_server->stats();
}

void Camera::clientConnected(int clientId) {
    qCInfo(lcCamera, "%s: client %d connected", qPrintable(m_profile.uid), clientId);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_viewers[clientId] = {};
}

void Camera::controlReceived(int clientId, uint32_t type, const uint8_t* data, size_t size) {
    m_commands.handle(clientId, type, data, size);
}

void Camera::clientDisconnected(int clientId, bool orderly) {
    const LinkServerStats totals = stats();
    qCInfo(lcCamera, "%s: client %d %s; %llu pictures sent to all, %llu dropped",
           qPrintable(m_profile.uid), clientId, orderly ? "left" : "fell silent",
           static_cast<unsigned long long>(totals.videoFramesSent),
           static_cast<unsigned long long>(totals.videoFramesDropped));
    m_playbacks.forget(clientId);
    m_downloads.forget(clientId);
    Viewer viewer;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_viewers.find(clientId);
        if (found == m_viewers.end())
            return;
        viewer = found->second;
        m_viewers.erase(found);
    }
    letGo(clientId, viewer);
}

void Camera::letGo(int clientId, const Viewer& viewer) {
    if (viewer.wantsVideo)
        m_feed->removeViewer(Medium::kVideo);
    if (viewer.wantsAudio)
        m_feed->removeViewer(Medium::kAudio);
    if (m_panTilt)
        m_panTilt->release({this, clientId}, cameraClockUs());
}

void Camera::frameReady(const EncodedFrame& frame) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (frame.medium == Medium::kVideo)
        m_cache.add(frame);
    for (auto& [clientId, viewer] : m_viewers) {
        if (frame.medium == Medium::kVideo)
            viewer.needsKey = viewer.needsKey && !frame.isKey;
        if (frame.medium == Medium::kVideo ? viewer.wantsVideo && !viewer.needsKey
                                           : viewer.wantsAudio)
            send(clientId, frame);
    }
}

void Camera::send(int clientId, const EncodedFrame& frame) {
    LinkFrameInfo info;
    info.codecId = frame.codecId;
    info.flags = frame.isKey ? 1 : 0;
    info.timestampMs = static_cast<uint32_t>(frame.timeUs / 1000);
    if (frame.medium == Medium::kVideo)
        m_server->sendVideo(clientId, kLiveChannel, info, frame.bytes);
    else
        m_server->sendAudio(clientId, kLiveChannel, info, frame.bytes);
}

void Camera::reply(int clientId, uint32_t type, const std::vector<uint8_t>& payload) {
    const int result = m_server->sendControl(clientId, type, payload.data(), payload.size());
    if (result < 0)
        qCWarning(lcCamera, "answer 0x%04X to client %d not sent: %d", type, clientId, result);
}

void Camera::setVideo(int clientId, bool on) {
    const bool changed = change(clientId, [&](Viewer& viewer) {
        const bool former = viewer.wantsVideo;
        viewer.wantsVideo = on;
        if (on)
            join(clientId, viewer);
        return former != on;
    });
    // The request comes first, so that a feed that was idle starts with just one key frame.
    if (on)
        m_feed->requestKeyFrame();
    if (changed && on)
        m_feed->addViewer(Medium::kVideo);
    else if (changed)
        m_feed->removeViewer(Medium::kVideo);
}

void Camera::setAudio(int clientId, bool on) {
    const bool changed = change(
        clientId, [&](Viewer& viewer) { return std::exchange(viewer.wantsAudio, on) != on; });
    if (changed && on)
        m_feed->addViewer(Medium::kAudio);
    else if (changed)
        m_feed->removeViewer(Medium::kAudio);
}

bool Camera::change(int clientId, const std::function<bool(Viewer&)>& edit) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_viewers.find(clientId);
    return found != m_viewers.end() && edit(found->second);
}

// A start sent again by a client that watches already begins its stream anew.
void Camera::join(int clientId, Viewer& viewer) {
    viewer.needsKey = true;
    if (m_feed->makesKeyFrames())
        return;
    for (const EncodedFrame& frame : m_cache.squeezed()) {
        send(clientId, frame);
        viewer.needsKey = false;
    }
}

void Camera::turn(int clientId, uint8_t control, uint8_t speed) {
    if (m_panTilt)
        m_panTilt->command({this, clientId}, control, speed, cameraClockUs());
}

CardSpace Camera::cardSpace() {
    return m_card ? m_card->store().space() : CardSpace();
}

CardOverview Camera::cardOverview() {
    return m_card ? m_card->store().overview() : CardOverview();
}

void Camera::listRecordings(int clientId, const ListRequest& request) {
    const bool isThere = m_card && m_card->store().isPresent();
    reply(clientId, IOTYPE_USER_IPCAM_LISTEVENT_VBK_RESP,
          isThere ? listReply(m_card->store().runs(request.fromSec, request.toSec))
                  : missingCardReply());
}

void Camera::playRecording(int clientId, const PlayRequest& request) {
    control(m_playbacks, Playbacks::kWatching.replyType, clientId, request);
}

void Camera::downloadRecording(int clientId, const PlayRequest& request) {
    control(m_downloads, Playbacks::kDownloading.replyType, clientId, request);
}

void Camera::control(Playbacks& playbacks, uint32_t replyType, int clientId,
                     const PlayRequest& request) {
    const auto answer = [&](PlayCommand command, int32_t result) {
        reply(clientId, replyType, playReply(command, result));
    };
    switch (static_cast<PlayCommand>(request.command)) {
        case PlayCommand::kStop:
            playbacks.stop(clientId);
            return answer(PlayCommand::kStop, 0);
        case PlayCommand::kStart:
            if (const int32_t refusal = start(playbacks, clientId, request.fromSec))
                answer(PlayCommand::kStart, refusal);
            return;
        default:
            qCDebug(lcCamera, "playback command %u ignored", request.command);
    }
}

int32_t Camera::start(Playbacks& playbacks, int clientId, const std::optional<int64_t>& fromSec) {
    playbacks.stop(clientId);
    if (!m_card || !m_card->store().isPresent())
        return kNoCard;
    const auto recording = fromSec ? m_card->store().find(*fromSec) : std::nullopt;
    return recording ? playbacks.start(clientId, m_card->store(), *recording, *fromSec)
                     : kNoRecording;
}

void Camera::grantRoom(int clientId, const RoomGrant& grant) {
    m_playbacks.grant(clientId, grant);
    m_downloads.grant(clientId, grant);
}

void Camera::formatCard(int clientId) {
    const auto answer = [this, clientId](bool isFormatted) {
        reply(clientId, IOTYPE_USER_IPCAM_FORMATEXTSTORAGE_RESP, formatReply(isFormatted));
    };
    if (m_card)
        m_card->format(answer);
    else
        answer(false);
}

}  // namespace orvelle
