#include "camera/card/playback.h"

#include <algorithm>
#include <utility>

#include "camera/camera_log.h"
#include "link/io_types.h"

namespace orvelle {

namespace {

constexpr int kLoginWaitMs = 25'000;
constexpr int kLoginCheckMs = 10;
/// Sent ahead of time at the start. Below what the link drops as too old.
constexpr int64_t kHeadStartUs = 500'000;
/// What a client may lag behind: sending, decoding, and its own start.
constexpr int64_t kClientLagUs = 500'000;

}  // namespace

Playback::Playback(const PlaybackTarget& target, Recording recording, int64_t fromSec)
    : KvThread(QStringLiteral("cam-playback")),
      m_target(target),
      m_recording(std::move(recording)),
      m_fromSec(fromSec) {}

void Playback::stop() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    KvThread::stop();
}

void Playback::run() {
    const QString error = m_reader.open(m_recording.path);
    if (!error.isEmpty()) {
        qCWarning(lcCamera, "playback: %s", qPrintable(error));
        say(PlayCommand::kStart, kNoRecording);
        return;
    }
    m_reader.seek((m_fromSec - m_recording.startSec) * 1'000'000);
    say(PlayCommand::kStart, m_target.channel);
    if (waitForLogin() && sendAll())
        say(PlayCommand::kEnd, 0);
}

bool Playback::waitForLogin() {
    for (int waitedMs = 0; waitedMs < kLoginWaitMs; waitedMs += kLoginCheckMs) {
        if (m_target.server->isChannelOpen(m_target.clientId, m_target.channel))
            return true;
        if (sleepUnlessStopped(kLoginCheckMs))
            return false;
    }
    qCWarning(lcCamera, "playback: client %d did not open channel %d", m_target.clientId,
              m_target.channel);
    return false;
}

// False when the client left or wants no more.
bool Playback::sendAll() {
    auto frame = m_reader.next();
    const int64_t offsetUs = cameraClockUs() - (frame ? frame->timeUs : 0);
    int64_t lastUs = cameraClockUs();
    for (; frame; frame = m_reader.next()) {
        lastUs = std::max(lastUs, frame->timeUs + offsetUs);
        if (!waitUntil(frame->timeUs + offsetUs - kHeadStartUs) || !send(*frame))
            return false;
    }
    return waitUntil(lastUs + kClientLagUs);
}

bool Playback::waitUntil(int64_t clockUs) {
    const int64_t waitUs = clockUs - cameraClockUs();
    return waitUs <= 0 ? !isStopped() : !sleepUnlessStopped(static_cast<int>(waitUs / 1000) + 1);
}

bool Playback::send(const EncodedFrame& frame) {
    LinkFrameInfo info;
    info.codecId = frame.codecId;
    info.flags = frame.isKey ? 1 : 0;
    info.timestampMs = static_cast<uint32_t>(frame.timeUs / 1000);
    const auto& [server, clientId, channel] = m_target;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (isStopped() || !server->isChannelOpen(clientId, channel))
        return false;
    if (frame.medium == Medium::kVideo)
        server->sendVideo(clientId, channel, info, frame.bytes);
    else
        server->sendAudio(clientId, channel, info, frame.bytes);
    return true;
}

void Playback::say(PlayCommand command, int32_t result) {
    const std::vector<uint8_t> payload = playReply(command, result);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!isStopped())
        m_target.server->sendControl(m_target.clientId, IOTYPE_USER_IPCAM_RECORD_PLAYCONTROL_RESP,
                                     payload.data(), payload.size());
}

}  // namespace orvelle
