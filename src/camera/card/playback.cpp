#include "camera/card/playback.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "camera/camera_log.h"
#include "camera/card/recording_name.h"
#include "link/io_types.h"
#include "link/result_codes.h"

namespace orvelle {

namespace {

constexpr int kLoginWaitMs = 25'000;
constexpr int kLoginCheckMs = 2;
/// Sent ahead of time at the start to a client that tells no room.
constexpr int64_t kHeadStartUs = 500'000;
/// What such a client may lag behind: sending, decoding, and its own start.
constexpr int64_t kClientLagUs = 500'000;
/// Between two looks at a channel that is full, or at a client that has not got everything.
constexpr int kFullWaitMs = 10;
/// Between two looks at a recording that is still being written, which grows once a second.
constexpr int kGrowthWaitMs = 300;
/// After which a recording that does not grow has ended, or has no one that follows it.
constexpr int kGrowthWaits = 10;

}  // namespace

Playback::Playback(const PlaybackTarget& target, const CardStore& store, Recording recording,
                   int64_t fromSec)
    : KvThread(QStringLiteral("cam-playback")),
      m_target(target),
      m_store(store),
      m_fromSec(fromSec),
      m_recording(std::move(recording)),
      m_startSec(m_recording.startSec) {}

void Playback::stop() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        KvThread::stop();
    }
    m_changed.notify_all();
}

void Playback::grant(const RoomGrant& room) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_room = room;
    }
    m_changed.notify_all();
}

QString Playback::openFirst() {
    QString error = m_reader.open(m_recording.path);
    // What was begun just now has nothing to show yet.
    for (int waits = 0; !error.isEmpty() && m_recording.isUnfinished && waits < kGrowthWaits;
         ++waits) {
        if (!pause(kGrowthWaitMs))
            return error;
        error = m_reader.open(m_recording.path);
    }
    return error;
}

void Playback::run() {
    const QString error = openFirst();
    if (!error.isEmpty()) {
        qCWarning(lcCamera, "playback: %s", qPrintable(error));
        say(PlayCommand::kStart, kNoRecording);
        return;
    }
    m_reader.seek((m_fromSec - m_recording.startSec) * 1'000'000, !m_recording.isUnfinished);
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
    do {
        if (!sendRecording())
            return false;
    } while (isGranted() && openFollowing());
    return waitUntilTaken();
}

bool Playback::sendRecording() {
    int waits = 0;
    for (;;) {
        while (auto frame = m_reader.next()) {
            frame->timeUs += (m_recording.startSec - m_startSec) * 1'000'000;
            if (!waitForTurn(*frame) || !send(*frame))
                return false;
            waits = 0;
        }
        // One that was finished meanwhile may have got its last second just before.
        const auto now = m_store.find(m_recording.startSec);
        const bool wasUnfinished =
            std::exchange(m_recording.isUnfinished, now && now->isUnfinished);
        if (!wasUnfinished || !isGranted() || !now || ++waits > kGrowthWaits)
            return true;
        m_isAtPresent = true;
        if (m_recording.isUnfinished && !pause(kGrowthWaitMs))
            return false;
        m_reader.reopen(now->path);
    }
}

bool Playback::openFollowing() {
    const int64_t nextSec = m_recording.startSec + kRecordingSec;
    for (int waits = 0; waits < kGrowthWaits; ++waits) {
        const auto next = m_store.find(nextSec);
        if (next && next->startSec == nextSec) {
            const QString error = m_reader.open(next->path);
            if (error.isEmpty()) {
                m_recording = *next;
                return true;
            }
            if (!next->isUnfinished) {
                qCWarning(lcCamera, "playback: %s", qPrintable(error));
                return false;
            }
        }
        // What is recorded now begins with the next key frame.
        if (!m_isAtPresent || !pause(kGrowthWaitMs))
            return false;
    }
    return false;
}

bool Playback::waitForTurn(const EncodedFrame& frame) {
    if (!m_offsetUs)
        m_offsetUs = cameraClockUs() - frame.timeUs;
    m_lastDueUs = std::max(m_lastDueUs, frame.timeUs + *m_offsetUs);
    const int64_t waitUs = frame.timeUs + *m_offsetUs - kHeadStartUs - cameraClockUs();
    const auto turn = std::chrono::steady_clock::now() + std::chrono::microseconds(waitUs);
    const uint64_t bytes = m_sentBytes + frame.bytes->size();
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_room)
        m_changed.wait_until(lock, turn, [&] { return isStopped() || m_room; });
    if (m_room)
        m_changed.wait(lock, [&] {
            return isStopped() || (bytes <= m_room->bytes && m_sentFrames < m_room->frames);
        });
    return !isStopped();
}

bool Playback::send(const EncodedFrame& frame) {
    LinkFrameInfo info;
    info.codecId = frame.codecId;
    info.flags = frame.isKey ? 1 : 0;
    info.timestampMs = static_cast<uint32_t>(frame.timeUs / 1000);
    LinkServer* const server = m_target.server;
    const int clientId = m_target.clientId, channel = m_target.channel;
    for (;;) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (isStopped() || !server->isChannelOpen(clientId, channel))
                return false;
            const int result = frame.medium == Medium::kVideo
                                   ? server->sendVideo(clientId, channel, info, frame.bytes)
                                   : server->sendAudio(clientId, channel, info, frame.bytes);
            if (result != IOTC_ER_TIMEOUT)
                break;
        }
        if (!pause(kFullWaitMs))
            return false;
    }
    m_sentBytes += frame.bytes->size();
    ++m_sentFrames;
    return true;
}

// The end must not overtake what is still on its way.
bool Playback::waitUntilTaken() {
    LinkServer* const server = m_target.server;
    const int clientId = m_target.clientId, channel = m_target.channel;
    while (server->waitingBytes(clientId, channel) > 0) {
        if (!pause(kFullWaitMs))
            return false;
    }
    const int64_t lagUs = m_lastDueUs + kClientLagUs - cameraClockUs();
    if (isGranted() || lagUs <= 0)
        return !isStopped();
    return pause(static_cast<int>(lagUs / 1000) + 1);
}

bool Playback::isGranted() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_room.has_value();
}

bool Playback::pause(int ms) {
    return !sleepUnlessStopped(ms);
}

void Playback::say(PlayCommand command, int32_t result) {
    const std::vector<uint8_t> payload = playReply(command, result);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!isStopped())
        m_target.server->sendControl(m_target.clientId, m_target.replyType, payload.data(),
                                     payload.size());
}

}  // namespace orvelle
