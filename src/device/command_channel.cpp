#include "device/command_channel.h"

#include <QDebug>

#include <array>

#include "core/log.h"
#include "device/command_threads.h"
#include "device/device_messages.h"
#include "link/av.h"
#include "link/limits.h"
#include "link/result_codes.h"

namespace orvelle {

namespace {

constexpr uint32_t kReceiveTimeoutMs = 1000;

KvTUTKRequest emptyRequest(uint32_t type) {
    return {type, QByteArray(8, '\0')};
}

}  // namespace

CommandChannel::CommandChannel() = default;

CommandChannel::~CommandChannel() {
    close();
}

bool CommandChannel::send(uint32_t type, const void* data, int size) {
    if (size < 0 || size > kMaxControlBytes || (size > 0 && !data))
        return false;
    const KvTUTKRequest request(type, QByteArray(static_cast<const char*>(data), size));
    return request.isValid() && m_requests.push(request);
}

bool CommandChannel::send(uint32_t type) {
    return m_requests.push(emptyRequest(type));
}

void CommandChannel::addListener(void* object, ListenerCallback callback) {
    m_listeners.add(object, callback);
}

void CommandChannel::removeListener(void* object) {
    m_listeners.remove(object);
}

void CommandChannel::open(Setup setup) {
    m_setup = std::move(setup);
    m_avIndex = m_setup.avIndex;
    m_requests.open(emptyRequest(IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ));
    // Both flags before either thread: a loop that ends at once must find the other's to clear.
    m_sendRunning = true;
    m_recvRunning = true;
    m_sendThread = std::make_unique<KvTUTKDeviceSendThread>(*this);
    m_sendThread->start(QThread::InheritPriority);
    m_recvThread = std::make_unique<KvTUTKDeviceRecvThread>(*this);
    m_recvThread->start(QThread::InheritPriority);
}

void CommandChannel::stop() {
    m_sendRunning = false;
    m_recvRunning = false;
    m_requests.close();
    const int index = m_avIndex;
    if (index >= 0)
        avWake(index);
}

void CommandChannel::close() {
    stop();
    KvThread::stopAndDelete(m_recvThread);
    KvThread::stopAndDelete(m_sendThread);
    m_avIndex = -1;
}

void CommandChannel::loopEnded(int result) {
    // The first loop that fails tells; the other one, or a loop that was asked to end, does not.
    if (!m_sendRunning.exchange(false))
        return;
    stop();
    m_setup.broke(result);
}

void CommandChannel::doSend(const KvThread& thread) {
    const std::chrono::milliseconds keepAlive(m_setup.keepAliveMs);
    log("%s doSend began\n", kLogInfo, qUtf8Printable(m_setup.uid));
    auto deadline = RequestQueue::Clock::now() + keepAlive;
    while (!thread.isStopped() && m_sendRunning) {
        auto request = m_requests.take(deadline);
        if (!m_sendRunning)
            break;
        if (!request) {
            request = emptyRequest(IOTYPE_USER_IPCAM_KEEPALIVE);
            deadline = RequestQueue::Clock::now() + keepAlive;
        }
        const int result = sendNow(*request);
        if (result < 0 && result != IOTC_ER_TIMEOUT) {
            log("%s, avSendIOCtrl = %d (break)\n", kLogInfo, qUtf8Printable(m_setup.uid), result);
            loopEnded(result);
        }
    }
    log("%s doSend ended\n", kLogInfo, qUtf8Printable(m_setup.uid));
}

int CommandChannel::sendNow(const KvTUTKRequest& request) const {
    const QByteArray& data = request.data();
    const int result = avSendIOCtrl(m_setup.avIndex, request.type(), data.constData(), data.size());
    if (request.type() != IOTYPE_USER_IPCAM_KEEPALIVE)
        log("%s avSendIOCtrl request(%X) = %d\n", kLogInfo, qUtf8Printable(m_setup.uid),
            request.type(), result);
    return result;
}

void CommandChannel::doRecv(const KvThread& thread) {
    const auto shouldStop = [this, &thread] { return thread.isStopped() || !m_recvRunning; };
    std::array<char, kMaxControlBytes + 1> buffer{};
    log("%s doRecv began\n", kLogInfo, qUtf8Printable(m_setup.uid));
    while (!shouldStop()) {
        uint32_t type = 0;
        const int result = avRecvIOCtrl(m_setup.avIndex, &type, buffer.data(), kMaxControlBytes,
                                        kReceiveTimeoutMs, shouldStop);
        if (result == AV_ER_TIMEOUT)
            continue;
        if (result < 0) {
            qDebug("%p avRecvIOCtrl = %d", static_cast<void*>(this), result);
            loopEnded(result);
            break;
        }
        buffer[static_cast<size_t>(result)] = '\0';
        receive(KvTUTKResponse(type, QByteArray(buffer.data(), result)));
    }
    log("%s doRecv ended\n", kLogInfo, qUtf8Printable(m_setup.uid));
}

void CommandChannel::receive(KvTUTKResponse response) {
    qDebug().noquote() << m_setup.uid << "recv";
    qDebug("%x", response.type());
    m_listeners.dispatch(response);
}

}  // namespace orvelle
