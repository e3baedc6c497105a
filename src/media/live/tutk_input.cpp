#include "media/live/tutk_input.h"

#include "device/tutk_device.h"
#include "link/av.h"
#include "link/io_types.h"
#include "media/live/tutk_input_threads.h"

#include <QDebug>

extern "C" {
#include <libavutil/time.h>
}

namespace {

/// Six seconds at 15 pictures a second: a decoder this far behind only makes the picture old.
constexpr int kMaxVideoBacklog = 90;
constexpr int kMaxAudioBacklog = 10;
/// The decoder knows the sound after two at most; some may be lost.
constexpr int kSoundFramesToLearn = 10;

}  // namespace

KvTUTKInput::KvTUTKInput(QObject* parent) : ChannelInput(parent) {}

KvTUTKInput::~KvTUTKInput() {
    KvTUTKInput::close();
}

void KvTUTKInput::setDevice(KvTUTKDevice* device) {
    m_device = device;
}

int KvTUTKInput::open() {
    close();
    clearReport();
    m_rate.restart(av_gettime_relative());
    const bool usable = m_device && m_device->sid() >= 0;
    const int index = usable ? m_device->avIndex() : -1;
    // What still waits from an earlier view would flash up as the first picture.
    if (index >= 0)
        avDiscardMedia(index);
    bind(index);
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
        avDiscardMedia(avIndex());
    m_rate.restart(av_gettime_relative());
    bind(-1);
}

int KvTUTKInput::speed() {
    return m_rate.bytesPerSecond(av_gettime_relative());
}

bool KvTUTKInput::isRunning() {
    return !KvThread::isThreadStopped(m_videoThread.get()) ||
           !KvThread::isThreadStopped(m_audioThread.get());
}

void KvTUTKInput::requestStop() {
    if (m_videoThread)
        m_videoThread->stop();
    if (m_audioThread)
        m_audioThread->stop();
    wakeReceivers();
}

int KvTUTKInput::startDevice() {
    if (!m_device)
        return -1;
    const std::array<uint8_t, 4> noDelay{};
    m_device->sendIOCtrl(IOTYPE_INNER_SND_DATA_DELAY, noDelay.data(), noDelay.size());
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_START);
    const std::lock_guard<std::mutex> lock(m_soundMutex);
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_AUDIOSTART);
    m_isSoundResting = false;
    m_soundFramesToLearn = kSoundFramesToLearn;
    return 0;
}

void KvTUTKInput::stopDevice() {
    // A device that has reconnected meanwhile may already be streaming to its next input.
    if (!isBound() || m_device->avIndex() != avIndex())
        return;
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_AUDIOSTOP);
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_STOP);
}

void KvTUTKInput::setSoundWanted(bool isWanted) {
    const std::lock_guard<std::mutex> lock(m_soundMutex);
    m_isSoundWanted = isWanted;
    followSound();
}

void KvTUTKInput::learnSound() {
    const std::lock_guard<std::mutex> lock(m_soundMutex);
    m_soundFramesToLearn = kSoundFramesToLearn;
    followSound();
}

/// Under the lock.
void KvTUTKInput::followSound() {
    const bool shallRest = !m_isSoundWanted && m_soundFramesToLearn == 0;
    if (shallRest == m_isSoundResting || !isBound() || m_device->avIndex() != avIndex())
        return;
    m_device->sendIOCtrl(shallRest ? IOTYPE_USER_IPCAM_AUDIOSTOP : IOTYPE_USER_IPCAM_AUDIOSTART);
    m_isSoundResting = shallRest;
    wakeReceivers();
}

void KvTUTKInput::startThreads() {
    createQueues();
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
    destroyQueues();
}

void KvTUTKInput::receiveEnded() {
    if (!isRunning())
        interruptQueues();
}

void KvTUTKInput::doRecvVideo(KvThread& thread) {
    if (!isBound()) {
        qDebug("KvTUTKInput device invalid");
        reportOnce(kLost);
        return;
    }
    receiveVideo(thread);
    qDebug("KvTUTKInput recv video stop");
}

void KvTUTKInput::doRecvAudio(KvThread& thread) {
    if (!isBound()) {
        qDebug("KvTUTKInput device invalid");
        reportOnce(kUnusable);
        return;
    }
    receiveAudio(thread);
    qDebug("KvTUTKInput recv audio stop");
}

void KvTUTKInput::channelEnded(MediaKind) {
    reportOnce(kLost);
}

void KvTUTKInput::boundVideo(const KvThread&) {
    const int waiting = videoQueue().size();
    if (waiting <= kMaxVideoBacklog)
        return;
    qDebug("input video > 90 flush()");
    stats().videoFramesDropped += static_cast<uint64_t>(waiting);
    flush();
}

void KvTUTKInput::boundAudio(const KvThread&) {
    const int waiting = audioQueue().size();
    if (waiting <= kMaxAudioBacklog)
        return;
    qDebug("input audio > 10 flush()");
    stats().audioFramesDropped += static_cast<uint64_t>(waiting);
    // Sound alone: the picture would have to wait for its next key frame.
    audioQueue().clear();
}

void KvTUTKInput::storeVideo(std::unique_ptr<Packet> packet) {
    const int64_t nowUs = av_gettime_relative();
    m_rate.add(packet->packet()->size);
    m_rate.update(nowUs);
    stats().noteArrival(packet->time(), nowUs);
    if (!videoQueue().offer(std::move(packet)))
        ++stats().videoFramesDropped;
}

void KvTUTKInput::storeAudio(std::unique_ptr<Packet> packet) {
    m_rate.add(packet->packet()->size);
    audioQueue().put(std::move(packet));
    if (m_soundFramesToLearn == 0)
        return;
    const std::lock_guard<std::mutex> lock(m_soundMutex);
    if (m_soundFramesToLearn > 0 && --m_soundFramesToLearn == 0)
        followSound();
}
