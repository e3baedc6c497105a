#include "media/tutk_input.h"

#include "device/tutk_device.h"
#include "link/av.h"
#include "link/io_types.h"
#include "media/tutk_input_threads.h"

extern "C" {
#include <libavutil/time.h>
}

KvTUTKInput::KvTUTKInput(QObject* parent) : KvBasePlayerInput(parent) {}

KvTUTKInput::~KvTUTKInput() {
    KvTUTKInput::close();
}

void KvTUTKInput::setDevice(KvTUTKDevice* device) {
    m_device = device;
}

int KvTUTKInput::open() {
    close();
    m_reported = false;
    m_rate.restart(av_gettime_relative());
    const bool usable = m_device && m_device->sid() >= 0;
    m_avIndex = usable ? m_device->avIndex() : -1;
    if (isBound()) {
        // What still waits from an earlier view would flash up as the first picture.
        avDiscardMedia(m_avIndex);
        m_lostBefore = avLostVideoFrames(m_avIndex);
    }
    if (startDevice() < 0)
        return -1;
    startThreads();
    return 0;
}

void KvTUTKInput::close() {
    requestStop();
    stopDevice();
    stopThreads();
    if (isBound())
        avDiscardMedia(m_avIndex);
    m_rate.restart(av_gettime_relative());
    m_avIndex = -1;
}

int KvTUTKInput::readVideoPacket(KvBasePlayerInputPacket** packet) {
    *packet = m_videoQueue ? m_videoQueue->take().release() : nullptr;
    return *packet ? 0 : -1;
}

int KvTUTKInput::readAudioPacket(KvBasePlayerInputPacket** packet) {
    *packet = m_audioQueue ? m_audioQueue->take().release() : nullptr;
    return *packet ? 0 : -1;
}

void KvTUTKInput::releaseVideoPacket(KvBasePlayerInputPacket* packet) {
    delete packet;
}

void KvTUTKInput::releaseAudioPacket(KvBasePlayerInputPacket* packet) {
    delete packet;
}

int KvTUTKInput::speed() {
    return m_rate.bytesPerSecond(av_gettime_relative());
}

bool KvTUTKInput::isRunning() {
    return !KvThread::isThreadStopped(m_videoThread.get()) ||
           !KvThread::isThreadStopped(m_audioThread.get());
}

void KvTUTKInput::flush() {
    if (m_videoQueue)
        m_videoQueue->clear();
    if (m_audioQueue)
        m_audioQueue->clear();
}

bool KvTUTKInput::waitForVideoPacket(const KvThread& reader, int timeoutMs) {
    return m_videoQueue &&
           m_videoQueue->waitForItem(timeoutMs, [&reader] { return reader.isStopped(); });
}

bool KvTUTKInput::waitForAudioPacket(const KvThread& reader, int timeoutMs) {
    return m_audioQueue &&
           m_audioQueue->waitForItem(timeoutMs, [&reader] { return reader.isStopped(); });
}

void KvTUTKInput::wakeReaders() {
    if (m_videoQueue)
        m_videoQueue->wake();
    if (m_audioQueue)
        m_audioQueue->wake();
}

void KvTUTKInput::requestStop() {
    if (m_videoThread)
        m_videoThread->stop();
    if (m_audioThread)
        m_audioThread->stop();
    if (isBound())
        avWake(m_avIndex);
}

int KvTUTKInput::startDevice() {
    if (!m_device)
        return -1;
    const std::array<uint8_t, 4> noDelay{};
    m_device->sendIOCtrl(IOTYPE_INNER_SND_DATA_DELAY, noDelay.data(), noDelay.size());
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_START);
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_AUDIOSTART);
    return 0;
}

void KvTUTKInput::stopDevice() {
    // A device that has reconnected meanwhile may already be streaming to its next input.
    if (!isBound() || m_device->avIndex() != m_avIndex)
        return;
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_AUDIOSTOP);
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_STOP);
}

void KvTUTKInput::startThreads() {
    m_videoQueue = std::make_unique<orvelle::VideoPacketQueue>();
    m_audioQueue = std::make_unique<OwningQueue<KvBasePlayerInputPacket>>();
    // Both exist before either runs, since each asks for the other in isRunning().
    m_videoThread = std::make_unique<KvTUTKInputRecvVideoThread>(*this);
    m_audioThread = std::make_unique<KvTUTKInputRecvAudioThread>(*this);
    m_videoThread->start();
    m_audioThread->start();
}

void KvTUTKInput::stopThreads() {
    requestStop();
    for (KvTUTKInputThread* thread : {m_audioThread.get(), m_videoThread.get()}) {
        if (thread)
            thread->waitForEnd();
    }
    m_audioThread.reset();
    m_videoThread.reset();
    m_audioQueue.reset();
    m_videoQueue.reset();
}

void KvTUTKInput::receiveEnded() {
    if (isRunning())
        return;
    m_videoQueue->interrupt();
    m_audioQueue->interrupt();
}

void KvTUTKInput::reportOnce(int32_t event) {
    if (!m_reported.exchange(true))
        notify(event);
}
