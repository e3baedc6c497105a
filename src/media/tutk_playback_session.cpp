#include "media/tutk_playback_input.h"

#include "device/device_messages.h"
#include "device/tutk_device.h"
#include "link/av.h"
#include "link/limits.h"
#include "link/result_codes.h"
#include "media/playback_time.h"
#include "media/tutk_playback_threads.h"

#include <QDebug>

using orvelle::PlaybackEnd;
using orvelle::SMsgAVIoctrlPlayRecord;
using orvelle::STimeDay;
using Request = orvelle::PlaybackExchange::Request;

namespace {

constexpr uint32_t kLoginTimeoutSec = 10;
/// How often a wait for the camera looks whether the session is still there.
constexpr int kLookMs = 500;
constexpr int kStopAnswerMs = 1000;

}  // namespace

bool KvTUTKPlaybackInput::isDeviceThere() const {
    return m_device && m_sid >= 0 && m_device->sid() == m_sid && m_device->isOnline();
}

void KvTUTKPlaybackInput::doOpen() {
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
    m_exchange.expect(Request::kTimeBase);
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_GET_TIMEZONE_REQ);
    return awaitAnswer();
}

void KvTUTKPlaybackInput::askStart() {
    const int32_t baseMinute = m_exchange.baseMinute();
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
    m_device->sendIOCtrl(IOTYPE_USER_IPCAM_RECORD_PLAYCONTROL, bytes.constData(), bytes.size());
}

bool KvTUTKPlaybackInput::startClient() {
    qDebug("avClientStart2");
    m_frameCounter = 0;
    const int channel = m_exchange.channel();
    const int index = openClient(channel);
    qDebug("KvTUTKPlaybackInput::_init(), channle = %d", index);
    if (index < 0) {
        qDebug("init failed _channel = %d", index);
        fail(isDeviceThere() ? PlaybackEnd::kRefused : PlaybackEnd::kLost, kUnusable);
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
