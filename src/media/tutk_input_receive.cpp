#include "media/tutk_input.h"

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

using orvelle::FrameInfo;
using orvelle::log;

namespace {

/// Six seconds at 15 pictures a second: a decoder this far behind only makes the picture old.
constexpr int kMaxVideoBacklog = 90;
constexpr int kMaxAudioBacklog = 10;
/// Frames that the channel holds before sound is taken, so that jitter does not tear it.
constexpr int kMinAudioWaiting = 5;
/// A wait is ended by a frame, an error or a stop; this only bounds what a lost wake-up costs.
constexpr int kWaitMs = 1000;
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
    log("%s ret = %d\n", orvelle::kLogInfo, call, result);
}

}  // namespace

void KvTUTKInput::limitVideoBacklog() {
    const int waiting = m_videoQueue->size();
    if (waiting <= kMaxVideoBacklog)
        return;
    qDebug("input video > 90 flush()");
    stats().videoFramesDropped += static_cast<uint64_t>(waiting);
    flush();
}

void KvTUTKInput::limitAudioBacklog() {
    const int waiting = m_audioQueue->size();
    if (waiting <= kMaxAudioBacklog)
        return;
    qDebug("input audio > 10 flush()");
    stats().audioFramesDropped += static_cast<uint64_t>(waiting);
    // Sound alone: the picture would have to wait for its next key frame.
    m_audioQueue->clear();
}

KvTUTKInput::Received KvTUTKInput::receiveVideo(char* buffer) {
    Received frame;
    int actualSize = 0, expectedSize = 0, infoSize = 0;
    frame.result = avRecvFrameData2(m_avIndex, buffer, orvelle::kMaxVideoFrameBytes, &actualSize,
                                    &expectedSize, frame.info.data(), FrameInfo::kBytes, &infoSize,
                                    &frame.number);
    return frame;
}

KvTUTKInput::Received KvTUTKInput::receiveAudio(char* buffer) {
    Received frame;
    frame.result = avRecvAudioData(m_avIndex, buffer, orvelle::kMaxAudioFrameBytes,
                                   frame.info.data(), FrameInfo::kBytes, &frame.number);
    return frame;
}

void KvTUTKInput::doRecvVideo(KvThread& thread) {
    if (!isBound()) {
        qDebug("KvTUTKInput device invalid");
        reportOnce(kLost);
        return;
    }
    const std::unique_ptr<char[]> buffer(new char[orvelle::kMaxVideoFrameBytes]);
    orvelle::SequenceGate gate;
    ReceiveLoop loop{thread};
    while (!thread.isStopped()) {
        limitVideoBacklog();
        const Received frame = receiveVideo(buffer.get());
        if (frame.result > 0)
            acceptVideo(frame, buffer.get(), gate);
        else if (frame.result == AV_ER_DATA_NOREADY)
            avWaitVideo(m_avIndex, kWaitMs, [&thread] { return thread.isStopped(); });
        else if (frame.result == AV_ER_LOSED_THIS_FRAME)
            noteVideoLoss(frame, gate);
        else if (frame.result == AV_ER_INCOMPLETE_FRAME)
            log("Incomplete video frame NO[%" PRIu32 "]\n", orvelle::kLogInfo, frame.number);
        else if (frame.result < 0 && !goesOnAfter("avRecvFrameData2", frame.result, loop))
            break;
    }
    qDebug("KvTUTKInput recv video stop");
}

void KvTUTKInput::doRecvAudio(KvThread& thread) {
    if (!isBound()) {
        qDebug("KvTUTKInput device invalid");
        reportOnce(kUnusable);
        return;
    }
    std::array<char, orvelle::kMaxAudioFrameBytes> buffer;
    ReceiveLoop loop{thread};
    while (!thread.isStopped()) {
        limitAudioBacklog();
        const int waiting = avCheckAudioBuf(m_avIndex);
        if (waiting < 0) {
            end("avCheckAudioBuf", waiting);
            break;
        }
        if (waiting < kMinAudioWaiting && !waitForAudio(thread))
            continue;
        const Received frame = receiveAudio(buffer.data());
        if (frame.result > 0)
            acceptAudio(frame, buffer.data());
        else if (frame.result == AV_ER_LOSED_THIS_FRAME)
            log("avRecvAudioData AV_ER_LOSED_THIS_FRAME\n", orvelle::kLogInfo);
        else if (frame.result < 0 && frame.result != AV_ER_DATA_NOREADY &&
                 !goesOnAfter("avRecvAudioData", frame.result, loop))
            break;
    }
    qDebug("KvTUTKInput recv audio stop");
}

bool KvTUTKInput::waitForAudio(const KvThread& thread) {
    const int64_t startUs = av_gettime_relative();
    avWaitAudio(m_avIndex, kMinAudioWaiting - 1, kWaitMs, [&thread] { return thread.isStopped(); });
    // Woken early there are frames enough, or the channel has ended and a read tells how.
    return av_gettime_relative() - startUs < kWaitMs * 1000;
}

void KvTUTKInput::acceptVideo(const Received& frame, const char* data,
                              orvelle::SequenceGate& gate) {
    const FrameInfo info =
        orvelle::decodeFrameInfo(frame.info.data(), frame.info.size()).value_or(FrameInfo());
    ++stats().videoFramesReceived;
    stats().bytesReceived += static_cast<uint64_t>(frame.result);
    if (!gate.accepts(info.sequence, info.isKey())) {
        qDebug("drop frame number = %u, flags = %d", info.sequence, 0);
        ++stats().videoFramesDropped;
        return;
    }
    const int64_t nowUs = av_gettime_relative();
    m_rate.add(frame.result);
    m_rate.update(nowUs);
    auto packet = KvBasePlayerInputPacket::copyOf(data, frame.result, info.isKey(),
                                                  orvelle::codecOfCameraId(info.codecId),
                                                  KvBasePlayerInputPacket::kVideo, info.timeSec());
    if (!packet)
        return;
    deliverPacket(packet.get());
    stats().noteArrival(info.timeSec(), nowUs);
    if (!m_videoQueue->offer(std::move(packet)))
        ++stats().videoFramesDropped;
}

void KvTUTKInput::acceptAudio(const Received& frame, const char* data) {
    const FrameInfo info =
        orvelle::decodeFrameInfo(frame.info.data(), frame.info.size()).value_or(FrameInfo());
    ++stats().audioFramesReceived;
    stats().bytesReceived += static_cast<uint64_t>(frame.result);
    m_rate.add(frame.result);
    auto packet = KvBasePlayerInputPacket::copyOf(data, frame.result, true,
                                                  orvelle::codecOfCameraId(info.codecId),
                                                  KvBasePlayerInputPacket::kAudio, info.timeSec());
    if (!packet)
        return;
    deliverPacket(packet.get());
    m_audioQueue->put(std::move(packet));
}

void KvTUTKInput::noteVideoLoss(const Received& gap, orvelle::SequenceGate& gate) {
    gate.noteLoss();
    stats().videoFramesLost = avLostVideoFrames(m_avIndex) - m_lostBefore;
    log("Lost video frame NO[%" PRIu32 "]\n", orvelle::kLogInfo, gap.number);
}

bool KvTUTKInput::goesOnAfter(const char* call, int result, ReceiveLoop& loop) {
    if (nameOfEnd(result)) {
        end(call, result);
        return false;
    }
    // A camera whose every frame is refused must not fill the log.
    if (loop.lastError != result)
        logCode(call, result);
    loop.lastError = result;
    loop.thread.sleepUnlessStopped(kErrorPauseMs);
    return true;
}

void KvTUTKInput::end(const char* call, int result) {
    if (const char* name = nameOfEnd(result))
        log("%s %s\n", orvelle::kLogInfo, call, name);
    else
        logCode(call, result);
    reportOnce(kLost);
}
