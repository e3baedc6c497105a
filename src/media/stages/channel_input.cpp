#include "media/stages/channel_input.h"

#include "core/log.h"
#include "core/thread.h"
#include "frames/camera_codecs.h"
#include "link/av.h"
#include "link/limits.h"
#include "link/result_codes.h"

#include <QDebug>

#include <cinttypes>

extern "C" {
#include <libavutil/time.h>
}

namespace orvelle {

namespace {

int handOver(std::unique_ptr<KvBasePlayerInputPacket> taken, KvBasePlayerInputPacket** packet) {
    *packet = taken.release();
    return *packet ? 0 : -1;
}

/// Frames that the channel holds before sound is taken, so that jitter does not tear it.
constexpr int kMinAudioWaiting = 5;
/// A wait is ended by a frame, an error or a stop; this only bounds what a lost wake-up costs.
constexpr int kWaitMs = 1000;
/// How long an announced end waits for frames that the announcement has overtaken.
constexpr int kTailMs = 250;
constexpr int kErrorPauseMs = 1;

/// The codes after which the channel gives nothing more.
const char* nameOfEnd(int result) {
    switch (result) {
        case AV_ER_SESSION_CLOSE_BY_REMOTE:
            return "AV_ER_SESSION_CLOSE_BY_REMOTE";
        case AV_ER_REMOTE_TIMEOUT_DISCONNECT:
            return "AV_ER_REMOTE_TIMEOUT_DISCONNECT";
        case IOTC_ER_INVALID_SID:
            return "IOTC_ER_INVALID_SID";
        case AV_ER_INVALID_ARG:
            return "AV_ER_INVALID_ARG";
        default:
            return nullptr;
    }
}

void logCode(const char* call, int result) {
    log("%s ret = %d\n", kLogInfo, call, result);
}

}  // namespace

int ChannelInput::readVideoPacket(Packet** packet) {
    return handOver(m_videoQueue ? m_videoQueue->take() : nullptr, packet);
}

int ChannelInput::readAudioPacket(Packet** packet) {
    return handOver(m_audioQueue ? m_audioQueue->take() : nullptr, packet);
}

void ChannelInput::releaseVideoPacket(Packet* packet) {
    delete packet;
}

void ChannelInput::releaseAudioPacket(Packet* packet) {
    delete packet;
}

void ChannelInput::flush() {
    if (m_videoQueue)
        m_videoQueue->clear();
    if (m_audioQueue)
        m_audioQueue->clear();
}

bool ChannelInput::waitForVideoPacket(const KvThread& reader, int timeoutMs) {
    return m_videoQueue &&
           m_videoQueue->waitForItem(timeoutMs, [&reader] { return reader.isStopped(); });
}

bool ChannelInput::waitForAudioPacket(const KvThread& reader, int timeoutMs) {
    return m_audioQueue &&
           m_audioQueue->waitForItem(timeoutMs, [&reader] { return reader.isStopped(); });
}

void ChannelInput::wakeReaders() {
    if (m_videoQueue)
        m_videoQueue->wake();
    if (m_audioQueue)
        m_audioQueue->wake();
}

void ChannelInput::bind(int avIndex) {
    m_lostBefore = avIndex >= 0 ? avLostVideoFrames(avIndex) : 0;
    m_avIndex = avIndex;
}

void ChannelInput::wakeReceivers() {
    const int index = m_avIndex;
    if (index >= 0)
        avWake(index);
}

void ChannelInput::createQueues() {
    m_videoQueue = std::make_unique<VideoPacketQueue>();
    m_audioQueue = std::make_unique<OwningQueue<Packet>>();
}

void ChannelInput::interruptQueues() {
    m_videoQueue->interrupt();
    m_audioQueue->interrupt();
}

void ChannelInput::destroyQueues() {
    m_audioQueue.reset();
    m_videoQueue.reset();
}

bool ChannelInput::reportOnce(int32_t event) {
    const bool isFirst = !m_reported.exchange(true);
    if (isFirst)
        notify(event);
    return isFirst;
}

FrameInfo ChannelInput::Received::info() const {
    return decodeFrameInfo(bytes.data(), bytes.size()).value_or(FrameInfo());
}

bool ChannelInput::isOver(const KvThread& thread) const {
    return thread.isStopped();
}

bool ChannelInput::isEnd(int result) const {
    return nameOfEnd(result) != nullptr;
}

ChannelInput::Received ChannelInput::takeVideo(char* buffer) {
    Received frame;
    int actualSize = 0, expectedSize = 0, infoSize = 0;
    frame.result =
        avRecvFrameData2(m_avIndex, buffer, kMaxVideoFrameBytes, &actualSize, &expectedSize,
                         frame.bytes.data(), FrameInfo::kBytes, &infoSize, &frame.number);
    return frame;
}

ChannelInput::Received ChannelInput::takeAudio(char* buffer) {
    Received frame;
    frame.result = avRecvAudioData(m_avIndex, buffer, kMaxAudioFrameBytes, frame.bytes.data(),
                                   FrameInfo::kBytes, &frame.number);
    return frame;
}

void ChannelInput::receiveVideo(KvThread& thread) {
    const std::unique_ptr<char[]> buffer(new char[kMaxVideoFrameBytes]);
    SequenceGate gate;
    ReceiveLoop loop{thread};
    while (!isOver(thread)) {
        boundVideo(thread);
        const Received frame = takeVideo(buffer.get());
        if (frame.result > 0)
            acceptVideo(frame, buffer.get(), gate);
        else if (frame.result == AV_ER_LOSED_THIS_FRAME)
            noteVideoLoss(frame, gate);
        else if (frame.result == AV_ER_INCOMPLETE_FRAME)
            log("Incomplete video frame NO[%" PRIu32 "]\n", kLogInfo, frame.number);
        else if (frame.result == AV_ER_DATA_NOREADY) {
            if (waitForVideo(thread) == Wait::kNothingLeft)
                break;
        } else if (!goesOnAfter("avRecvFrameData2", frame.result, kVideoKind, loop))
            break;
    }
}

void ChannelInput::receiveAudio(KvThread& thread) {
    std::array<char, kMaxAudioFrameBytes> buffer;
    ReceiveLoop loop{thread};
    while (!isOver(thread)) {
        boundAudio(thread);
        const int waiting = avCheckAudioBuf(m_avIndex);
        if (waiting < 0) {
            end("avCheckAudioBuf", waiting, kAudioKind);
            break;
        }
        const bool takesFew = isEnding() || isSoundResting();
        if (waiting < kMinAudioWaiting && !(takesFew && waiting > 0)) {
            // Woken early there are frames enough, or the channel has ended and a read tells how.
            const Wait wait = waitForAudio(thread);
            if (wait == Wait::kNothingLeft)
                break;
            if (wait == Wait::kInVain)
                continue;
        }
        const Received frame = takeAudio(buffer.data());
        if (frame.result > 0)
            acceptAudio(frame, buffer.data());
        else if (frame.result == AV_ER_LOSED_THIS_FRAME)
            log("avRecvAudioData AV_ER_LOSED_THIS_FRAME\n", kLogInfo);
        else if (frame.result != AV_ER_DATA_NOREADY &&
                 !goesOnAfter("avRecvAudioData", frame.result, kAudioKind, loop))
            break;
    }
}

template <class WaitOnChannel>
ChannelInput::Wait ChannelInput::wait(const KvThread& thread, WaitOnChannel waitOnChannel) {
    const bool isTail = isEnding();
    const bool isResting = isSoundResting();
    const int waitMs = isTail ? kTailMs : kWaitMs;
    const int64_t startUs = av_gettime_relative();
    waitOnChannel(waitMs, isTail || isResting, [this, &thread, isTail, isResting] {
        return isOver(thread) || isEnding() != isTail || isSoundResting() != isResting;
    });
    if (av_gettime_relative() - startUs < waitMs * 1000)
        return Wait::kWoken;
    return isTail ? Wait::kNothingLeft : Wait::kInVain;
}

ChannelInput::Wait ChannelInput::waitForVideo(const KvThread& thread) {
    return wait(thread, [this](int waitMs, bool, const AvStopCheck& stop) {
        avWaitVideo(m_avIndex, waitMs, stop);
    });
}

ChannelInput::Wait ChannelInput::waitForAudio(const KvThread& thread) {
    return wait(thread, [this](int waitMs, bool takesFew, const AvStopCheck& stop) {
        avWaitAudio(m_avIndex, takesFew ? 0 : kMinAudioWaiting - 1, waitMs, stop);
    });
}

void ChannelInput::acceptVideo(const Received& frame, const char* data, SequenceGate& gate) {
    const FrameInfo info = frame.info();
    ++stats().videoFramesReceived;
    stats().bytesReceived += static_cast<uint64_t>(frame.result);
    const bool isWhole = gate.accepts(info.sequence, info.isKey(), info.timeSec());
    if (!isWhole) {
        if (isLive())
            qCDebug(lcDebug, "drop frame number = %u, flags = %d", info.sequence, 0);
        ++stats().videoFramesDropped;
    }
    auto packet = Packet::copyOf(data, frame.result, info.isKey(), codecOfCameraId(info.codecId),
                                 Packet::kVideo, info.timeSec());
    if (!packet)
        return;
    // The decoder needs it nonetheless: a stream may heal without key frames.
    packet->setFollowsLoss(!isWhole);
    if (isWhole)
        deliverPacket(packet.get());
    storeVideo(std::move(packet));
}

void ChannelInput::acceptAudio(const Received& frame, const char* data) {
    const FrameInfo info = frame.info();
    ++stats().audioFramesReceived;
    stats().bytesReceived += static_cast<uint64_t>(frame.result);
    if (isSoundResting())
        return;
    auto packet = Packet::copyOf(data, frame.result, true, codecOfCameraId(info.codecId),
                                 Packet::kAudio, info.timeSec());
    if (!packet)
        return;
    deliverPacket(packet.get());
    storeAudio(std::move(packet));
}

void ChannelInput::noteVideoLoss(const Received& gap, SequenceGate& gate) {
    gate.noteLoss();
    stats().videoFramesLost = avLostVideoFrames(m_avIndex) - m_lostBefore;
    log("Lost video frame NO[%" PRIu32 "]\n", kLogInfo, gap.number);
}

bool ChannelInput::goesOnAfter(const char* call, int result, MediaKind kind, ReceiveLoop& loop) {
    if (isEnd(result)) {
        end(call, result, kind);
        return false;
    }
    if (result == 0)
        return true;
    // A camera whose every frame is refused must not fill the log.
    if (loop.lastError != result)
        logCode(call, result);
    loop.lastError = result;
    loop.thread.sleepUnlessStopped(kErrorPauseMs);
    return true;
}

void ChannelInput::end(const char* call, int result, MediaKind kind) {
    if (const char* name = nameOfEnd(result))
        log("%s %s\n", kLogInfo, call, name);
    else
        logCode(call, result);
    channelEnded(kind);
}

}  // namespace orvelle
