#include "media/tutk_playback_input.h"

#include "device/tutk_device.h"
#include "link/result_codes.h"
#include "media/tutk_playback_threads.h"

#include <QDebug>

using orvelle::PlaybackEnd;
using orvelle::PlaybackExchange;

namespace {

/// Bounds what a lost wake-up costs.
constexpr int kWaitMs = 1000;
/// From one interruption of a login to the next: one that comes just before it is lost.
constexpr int kInterruptRepeatMs = 5;

}  // namespace

KvTUTKPlaybackInput::KvTUTKPlaybackInput(QObject* parent) : ChannelInput(parent) {}

KvTUTKPlaybackInput::~KvTUTKPlaybackInput() {
    KvTUTKPlaybackInput::close();
    KvTUTKPlaybackInput::setDevice(nullptr);
}

void KvTUTKPlaybackInput::setDevice(KvTUTKDevice* device) {
    if (m_device)
        m_device->removeListener(this);
    m_device = device;
    if (m_device)
        m_device->addListener(this, onResponse);
}

int KvTUTKPlaybackInput::open() {
    close();
    clearReport();
    m_endReason = PlaybackEnd::kNone;
    m_exchange.restart();
    m_openTime = m_startTime;
    m_sid = m_device ? m_device->sid() : -1;
    createQueues();
    m_soundGate = std::make_unique<orvelle::SoundGate>(audioQueue());
    m_openThread = std::make_unique<KvTUTKPlaybackOpenThread>(*this);
    m_openThread->start();
    return 0;
}

void KvTUTKPlaybackInput::requestStop() {
    m_exchange.abandon();
    if (!m_openThread)
        return;
    m_openThread->stop();
    interruptLogin();
    wakeReceivers();
    wakeReaders();
}

void KvTUTKPlaybackInput::close() {
    requestStop();
    if (m_openThread) {
        while (!m_openThread->waitForEnd(kInterruptRepeatMs))
            interruptLogin();
        m_openThread.reset();
    }
    m_soundGate.reset();
    destroyQueues();
}

bool KvTUTKPlaybackInput::isRunning() {
    return !KvThread::isThreadStopped(m_openThread.get());
}

int KvTUTKPlaybackInput::readVideoPacket(Packet** packet) {
    const int result = ChannelInput::readVideoPacket(packet);
    if (result == 0)
        m_soundGate->pictureTaken();
    return result;
}

void KvTUTKPlaybackInput::flush() {
    ChannelInput::flush();
    if (m_soundGate)
        m_soundGate->clear();
}

void KvTUTKPlaybackInput::onResponse(void* input, KvTUTKResponse* response) {
    static_cast<KvTUTKPlaybackInput*>(input)->handleResponse(*response);
}

void KvTUTKPlaybackInput::handleResponse(const KvTUTKResponse& response) {
    qDebug("KvTUTKPlaybackInput::onResponseCallback began %x", response.type());
    switch (m_exchange.accept(response)) {
        case PlaybackExchange::News::kRefused:
            fail(PlaybackEnd::kRefused, kUnusable);
            break;
        case PlaybackExchange::News::kEnded:
            wakeReceivers();
            break;
        case PlaybackExchange::News::kNone:
            break;
    }
    qDebug("KvTUTKPlaybackInput::onResponseCallback ended %x", response.type());
}

void KvTUTKPlaybackInput::fail(PlaybackEnd reason, Event event) {
    if (m_exchange.isAbandoned())
        return;
    PlaybackEnd none = PlaybackEnd::kNone;
    m_endReason.compare_exchange_strong(none, reason);
    reportOnce(event);
}

void KvTUTKPlaybackInput::doRecvVideo(KvThread& thread) {
    receiveVideo(thread);
    qDebug("KvTUTKPlaybackInput recv video stop");
}

void KvTUTKPlaybackInput::doRecvAudio(KvThread& thread) {
    receiveAudio(thread);
    qDebug("KvTUTKPlaybackInput recv audio stop");
}

bool KvTUTKPlaybackInput::isOver(const KvThread& thread) const {
    return thread.isStopped() || m_exchange.isAbandoned();
}

bool KvTUTKPlaybackInput::isEnd(int result) const {
    return result == AV_ER_NO_PERMISSION || ChannelInput::isEnd(result);
}

void KvTUTKPlaybackInput::channelEnded(MediaKind kind) {
    // A camera that has announced the end may close the channel at once.
    if (kind == kVideoKind && !m_exchange.hasEnded())
        fail(PlaybackEnd::kLost, kLost);
}

void KvTUTKPlaybackInput::boundVideo(const KvThread& thread) {
    const auto isFull = [this] {
        return videoQueue().size() >= kMaxPictures || videoQueue().bytes() >= kMaxBytes;
    };
    while (isFull() && !isOver(thread)) {
        const int waiting = videoQueue().size();
        videoQueue().waitForSpace(waiting - 1, kWaitMs, [this, &thread] { return isOver(thread); });
    }
}

void KvTUTKPlaybackInput::storeVideo(std::unique_ptr<Packet> packet) {
    m_soundGate->pictureQueued(packet->time());
    packet->setTime(m_frameCounter / kPicturesPerSec);
    if (videoQueue().offer(std::move(packet))) {
        ++m_frameCounter;
        return;
    }
    m_soundGate->pictureRefused();
    ++stats().videoFramesDropped;
}

void KvTUTKPlaybackInput::storeAudio(std::unique_ptr<Packet> packet) {
    if (!m_soundGate->offer(std::move(packet)))
        ++stats().audioFramesDropped;
}
