#include <QDebug>

#include <array>

#include "core/log.h"
#include "device/command_threads.h"
#include "device/device_messages.h"
#include "device/logging.h"
#include "device/tutk_device.h"
#include "link/av.h"
#include "link/limits.h"
#include "link/result_codes.h"

using orvelle::kLogInfo;
using orvelle::log;
using orvelle::RequestQueue;

namespace {

constexpr uint32_t kReceiveTimeoutMs = 1000;

KvTUTKRequest emptyRequest(uint32_t type) {
    return {type, QByteArray(8, '\0')};
}

}  // namespace

bool KvTUTKDevice::sendIOCtrl(uint32_t type, const void* data, int size) {
    if (size < 0 || size > orvelle::kMaxControlBytes || (size > 0 && !data))
        return false;
    const KvTUTKRequest request(type, QByteArray(static_cast<const char*>(data), size));
    return request.isValid() && m_requests.push(request);
}

bool KvTUTKDevice::sendIOCtrl(uint32_t type) {
    return m_requests.push(emptyRequest(type));
}

void KvTUTKDevice::startLoops() {
    m_requests.open(emptyRequest(IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ));
    m_lastResult = 0;
    m_state = State::kOnline;
    // Both flags before either thread: a loop that ends at once must find the other's to clear.
    m_sendRunning = true;
    m_recvRunning = true;
    m_sendThread = std::make_unique<KvTUTKDeviceSendThread>(*this);
    m_sendThread->start(QThread::InheritPriority);
    m_recvThread = std::make_unique<KvTUTKDeviceRecvThread>(*this);
    m_recvThread->start(QThread::InheritPriority);
}

void KvTUTKDevice::stopLoops() {
    if (!m_ownsSession)
        return;
    m_sendRunning = false;
    m_recvRunning = false;
    m_requests.close();
    const int index = m_avIndex;
    if (index >= 0)
        avWake(index);
}

void KvTUTKDevice::loopEnded(int result) {
    // The first loop that fails tells; the other one, or a loop that was asked to end, does not.
    const bool isFirst = m_sendRunning.exchange(false);
    if (!isFirst)
        return;
    m_lastResult = result;
    m_state = result == AV_ER_SESSION_CLOSE_BY_REMOTE ? State::kClosedByCamera : State::kLost;
    stopLoops();
    qCInfo(lcDevice) << m_uid << "ended its session:" << orvelle::linkResultText(result);
    std::function<void()> sessionLost;
    {
        const std::lock_guard<std::mutex> lock(m_callbackMutex);
        sessionLost = m_sessionLost;
    }
    if (sessionLost)
        sessionLost();
}

void KvTUTKDevice::doSend(const KvThread& thread) {
    const std::chrono::milliseconds keepAlive(m_timing.keepAliveMs);
    log("%s doSend began\n", kLogInfo, qUtf8Printable(m_uid));
    auto deadline = RequestQueue::Clock::now() + keepAlive;
    while (!thread.isStopped() && m_sendRunning) {
        auto request = m_requests.take(deadline);
        if (!m_sendRunning)
            break;
        if (!request) {
            request = emptyRequest(IOTYPE_USER_IPCAM_KEEPALIVE);
            deadline = RequestQueue::Clock::now() + keepAlive;
        }
        const int result = send(*request);
        if (result < 0 && result != IOTC_ER_TIMEOUT) {
            log("%s, avSendIOCtrl = %d (break)\n", kLogInfo, qUtf8Printable(m_uid), result);
            loopEnded(result);
        }
    }
    log("%s doSend ended\n", kLogInfo, qUtf8Printable(m_uid));
}

int KvTUTKDevice::send(const KvTUTKRequest& request) {
    const QByteArray& data = request.data();
    const int result = avSendIOCtrl(m_avIndex, request.type(), data.constData(), data.size());
    if (request.type() != IOTYPE_USER_IPCAM_KEEPALIVE)
        log("%s avSendIOCtrl request(%X) = %d\n", kLogInfo, qUtf8Printable(m_uid), request.type(),
            result);
    return result;
}

void KvTUTKDevice::doRecv(const KvThread& thread) {
    const auto shouldStop = [this, &thread] { return thread.isStopped() || !m_recvRunning; };
    std::array<char, orvelle::kMaxControlBytes + 1> buffer{};
    log("%s doRecv began\n", kLogInfo, qUtf8Printable(m_uid));
    while (!shouldStop()) {
        uint32_t type = 0;
        const int result = avRecvIOCtrl(m_avIndex, &type, buffer.data(), orvelle::kMaxControlBytes,
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
    log("%s doRecv ended\n", kLogInfo, qUtf8Printable(m_uid));
}

void KvTUTKDevice::receive(KvTUTKResponse response) {
    qDebug().noquote() << m_uid << "recv";
    qDebug("%x", response.type());
    if (response.type() == IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_RESP)
        rememberMode(response);
    m_listeners.dispatch(response);
}

void KvTUTKDevice::rememberMode(const KvTUTKResponse& response) {
    const auto reply = orvelle::DeviceTypeReply::decode(response.data());
    if (!reply.type)
        return;
    m_mode = *reply.type;
    qDebug().noquote() << m_uid << "-> type =" << *reply.type;
}
