#include "media/card/tutk_playback_input.h"

#include "device/device_messages.h"
#include "device/tutk_device.h"
#include "link/av.h"
#include "link/limits.h"
#include "link/result_codes.h"
#include "media/card/playback_time.h"
#include "media/card/tutk_playback_threads.h"

#include <QDebug>

using orvelle::PlaybackEnd;
using orvelle::PlaybackExchange;
using orvelle::SMsgAVIoctrlPlayRecord;
using orvelle::STimeDay;
using Request = orvelle::PlaybackExchange::Request;

namespace {

/// Bounds what a lost wake-up costs.
constexpr int kWaitMs = 1000;
/// From one interruption of a login to the next: one that comes just before it is lost.
constexpr int kInterruptRepeatMs = 5;
constexpr uint32_t kLoginTimeoutSec = 10;
/// How often a wait for the camera looks whether the session is still there.
constexpr int kLookMs = 500;
constexpr int kStopAnswerMs = 1000;
/// What has to wait before a reader that ran dry goes on: a slow path shows longer stretches, and
/// stands less often.
constexpr double kHeldBackSec = 1.5;
/// Room is told anew when this share of it has become free.
constexpr int kRoomShare = 8;

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
    m_knownBaseMinute.reset();
}

int KvTUTKPlaybackInput::open() {
    close();
    clearReport();
    m_endReason = PlaybackEnd::kNone;
    m_exchange.restart(m_purpose == Purpose::kWatch ? IOTYPE_USER_IPCAM_RECORD_PLAYCONTROL_RESP
                                                    : IOTYPE_CARD_DOWNLOAD_RESP,
                       m_knownBaseMinute);
    m_openTime = m_startTime;
    m_sid = m_device ? m_device->sid() : -1;
    createQueues();
    std::optional<double> askedSec;
    if (m_recordingStart.isValid())
        askedSec = static_cast<double>(m_recordingStart.msecsTo(m_startTime)) / 1000.0;
    m_times = std::make_unique<orvelle::PlaybackTimes>(audioQueue(), askedSec);
    m_isHeldBack = false;
    m_openThread = std::make_unique<KvTUTKPlaybackOpenThread>(*this);
    m_openThread->start();
    return 0;
}

void KvTUTKPlaybackInput::requestStop() {
    {
        const std::lock_guard<std::mutex> lock(m_eventMutex);
        m_exchange.abandon();
    }
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
    destroyQueues();
    m_times.reset();
}

bool KvTUTKPlaybackInput::isRunning() {
    return !KvThread::isThreadStopped(m_openThread.get());
}

int KvTUTKPlaybackInput::readVideoPacket(Packet** packet) {
    if (isHeldBack())
        return -1;
    const int result = ChannelInput::readVideoPacket(packet);
    if (result == 0) {
        m_lastReadSec = (*packet)->time();
        noteTaken(**packet);
    }
    return result;
}

int KvTUTKPlaybackInput::readAudioPacket(Packet** packet) {
    const int result = ChannelInput::readAudioPacket(packet);
    if (result == 0)
        noteTaken(**packet);
    return result;
}

bool KvTUTKPlaybackInput::waitForVideoPacket(const KvThread& reader, int timeoutMs) {
    if (!isHeldBack())
        return ChannelInput::waitForVideoPacket(reader, timeoutMs);
    videoQueue().waitForItems(timeoutMs,
                              [this, &reader] { return reader.isStopped() || !isHeldBack(); });
    return !isHeldBack();
}

void KvTUTKPlaybackInput::holdBack() {
    m_isHeldBack = true;
}

// Ends by itself once enough waits, or when nothing more will come.
bool KvTUTKPlaybackInput::isHeldBack() {
    if (!m_isHeldBack)
        return false;
    const bool isEnough =
        m_lastQueuedSec - m_lastReadSec >= kHeldBackSec || m_exchange.hasEnded() || !isRunning();
    if (isEnough)
        m_isHeldBack = false;
    return !isEnough;
}

void KvTUTKPlaybackInput::flush() {
    ChannelInput::flush();
    if (m_times)
        m_times->clear();
}

void KvTUTKPlaybackInput::openEnded() {
    m_times->endPictures();
    interruptQueues();
}

void KvTUTKPlaybackInput::noteTaken(const Packet& packet) {
    bool isDue = false;
    {
        const std::lock_guard<std::mutex> lock(m_roomMutex);
        m_takenBytes += static_cast<uint64_t>(packet.packet()->size);
        ++m_takenFrames;
        isDue = m_takenBytes + kRoomBytes >= m_grantedBytes + kRoomBytes / kRoomShare ||
                m_takenFrames + kRoomFrames >= m_grantedFrames + kRoomFrames / kRoomShare;
    }
    if (isDue)
        grantRoom();
}

void KvTUTKPlaybackInput::grantRoom() {
    orvelle::PlaybackRoom room;
    {
        const std::lock_guard<std::mutex> lock(m_roomMutex);
        m_grantedBytes = m_takenBytes + kRoomBytes;
        m_grantedFrames = m_takenFrames + kRoomFrames;
        room.channel = static_cast<uint32_t>(m_exchange.channel());
        room.bytes = m_grantedBytes;
        room.frames = m_grantedFrames;
    }
    const QByteArray bytes = room.encode();
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_RECORD_ROOM, bytes.constData(), bytes.size());
}

void KvTUTKPlaybackInput::onResponse(void* input, KvTUTKResponse* response) {
    static_cast<KvTUTKPlaybackInput*>(input)->handleResponse(*response);
}

void KvTUTKPlaybackInput::handleResponse(const KvTUTKResponse& response) {
    qDebug("KvTUTKPlaybackInput::onResponseCallback began %x", response.type());
    switch (m_exchange.accept(response)) {
        case PlaybackExchange::News::kRefused:
            fail(refusal(), kUnusable);
            break;
        case PlaybackExchange::News::kEnded:
            // A reader that is held back finds out within its wait: the queues may be gone here.
            wakeReceivers();
            break;
        case PlaybackExchange::News::kNone:
            break;
    }
    qDebug("KvTUTKPlaybackInput::onResponseCallback ended %x", response.type());
}

PlaybackEnd KvTUTKPlaybackInput::refusal() const {
    return m_exchange.isMissing() ? PlaybackEnd::kMissing : PlaybackEnd::kRefused;
}

void KvTUTKPlaybackInput::fail(PlaybackEnd reason, Event event) {
    const std::lock_guard<std::mutex> lock(m_eventMutex);
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
    packet->setTime(m_times->takePicture(packet->time()));
    m_lastQueuedSec = packet->time();
    if (!videoQueue().offer(std::move(packet)))
        ++stats().videoFramesDropped;
}

void KvTUTKPlaybackInput::storeAudio(std::unique_ptr<Packet> packet) {
    if (!m_times->offer(std::move(packet)))
        ++stats().audioFramesDropped;
}

bool KvTUTKPlaybackInput::isDeviceThere() const {
    return m_device && m_sid >= 0 && m_device->sid() == m_sid && m_device->isOnline();
}

void KvTUTKPlaybackInput::doOpen() {
    m_former.reset();
    if (!isDeviceThere()) {
        qDebug("KvTUTKPlaybackInput device invalid");
        fail(PlaybackEnd::kLost, kUnusable);
        return;
    }
    if (!askTimeBase())
        return;
    askStart();
    if (startClient())
        receive();
    qDebug("medias threads ended");
    askStop();
    tearDown();
}

bool KvTUTKPlaybackInput::awaitAnswer() {
    while (!m_exchange.isAbandoned()) {
        if (m_exchange.wait(kLookMs))
            return true;
        if (!isDeviceThere()) {
            fail(PlaybackEnd::kLost, kLost);
            return false;
        }
    }
    return false;
}

bool KvTUTKPlaybackInput::askTimeBase() {
    if (m_exchange.baseMinute())
        return true;
    m_exchange.expect(Request::kTimeBase);
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_GET_TIMEZONE_REQ);
    return awaitAnswer();
}

void KvTUTKPlaybackInput::askStart() {
    const int32_t baseMinute = m_exchange.baseMinute().value_or(0);
    const QDateTime requested = orvelle::recordingTime(m_openTime, baseMinute);
    qDebug() << "src time = " << m_openTime << ", start playback -> " << requested
             << "_baseMinute = " << baseMinute;
    const STimeDay day = STimeDay::from(requested.date(), requested.time());
    qDebug("sTimeDay = (%04d-%02d-%02d %02d:%02d:%02d)", day.year, day.month, day.day, day.hour,
           day.minute, day.second);
    m_exchange.expect(Request::kStart);
    sendControl(SMsgAVIoctrlPlayRecord::start(day));
    awaitAnswer();
}

void KvTUTKPlaybackInput::sendControl(const SMsgAVIoctrlPlayRecord& request) {
    const QByteArray bytes = request.encode();
    m_device->sendIOCtrl(
        m_purpose == Purpose::kWatch ? IOTYPE_USER_IPCAM_RECORD_PLAYCONTROL : IOTYPE_CARD_DOWNLOAD,
        bytes.constData(), bytes.size());
}

bool KvTUTKPlaybackInput::startClient() {
    qDebug("avClientStart2");
    const int channel = m_exchange.channel();
    {
        const std::lock_guard<std::mutex> lock(m_roomMutex);
        m_takenBytes = 0;
        m_takenFrames = 0;
    }
    // Before the login, so that the camera knows it when it begins to send.
    if (channel >= 0)
        grantRoom();
    const int index = openClient(channel);
    qDebug("KvTUTKPlaybackInput::_init(), channle = %d", index);
    if (index < 0) {
        qDebug("init failed _channel = %d", index);
        fail(isDeviceThere() ? refusal() : PlaybackEnd::kLost, kUnusable);
        return false;
    }
    bind(index);
    return true;
}

int KvTUTKPlaybackInput::openClient(int channel) {
    if (channel < 0 || channel >= orvelle::kMaxLinkChannels)
        return AV_ER_INVALID_ARG;
    const QByteArray password = m_device->password().toUtf8();
    uint32_t serviceType = 0;
    int resend = 0;
    m_loginChannel = channel;
    const int index =
        m_exchange.isAbandoned()
            ? LINK_ER_ABORTED
            : avClientStart2(m_sid, orvelle::kLinkAccount, password.constData(), kLoginTimeoutSec,
                             &serviceType, static_cast<uint8_t>(channel), &resend);
    m_loginChannel = -1;
    return index;
}

void KvTUTKPlaybackInput::interruptLogin() {
    const int channel = m_loginChannel;
    if (channel < 0)
        return;
    qDebug("avClientExit");
    avClientExit(m_sid, static_cast<uint8_t>(channel));
}

void KvTUTKPlaybackInput::receive() {
    m_videoThread = std::make_unique<KvTUTKPlaybackInputRecvVideoThread>(*this);
    m_audioThread = std::make_unique<KvTUTKPlaybackInputRecvAudioThread>(*this);
    m_videoThread->start();
    m_audioThread->start();
    qDebug("KvTUTKPlaybackInput _start() ended");
    m_videoThread->waitForEnd();
    m_audioThread->waitForEnd();
    PlaybackEnd none = PlaybackEnd::kNone;
    if (!m_exchange.isAbandoned())
        m_endReason.compare_exchange_strong(none, PlaybackEnd::kFinished);
}

void KvTUTKPlaybackInput::askStop() {
    m_exchange.expect(Request::kStop);
    sendControl(SMsgAVIoctrlPlayRecord::stop());
    // Whoever closes does not wait, and a camera that is gone does not answer.
    if (isDeviceThere())
        m_exchange.wait(kStopAnswerMs);
}

void KvTUTKPlaybackInput::tearDown() {
    qDebug("_stop");
    qDebug("KvTUTKPlaybackInput _stop() video = %p, audio = %p",
           static_cast<void*>(m_videoThread.get()), static_cast<void*>(m_audioThread.get()));
    m_audioThread.reset();
    qDebug("KvTUTKPlaybackInput _stop() release audio ended");
    m_videoThread.reset();
    qDebug("KvTUTKPlaybackInput _stop() release video ended");
    qDebug("KvTUTKPlaybackInput _uninit() _channel = %d, _channelId = %d", avIndex(),
           m_exchange.channel());
    if (isBound())
        avClientStop(avIndex());
    bind(-1);
    qDebug("KvTUTKPlaybackInput _stop() ended");
}
