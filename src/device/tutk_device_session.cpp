#include "core/log.h"
#include "core/thread.h"
#include "core/timer.h"
#include "core/wipe.h"
#include "device/logging.h"
#include "device/tutk_device.h"
#include "link/av.h"
#include "link/iotc.h"
#include "link/limits.h"
#include "link/result_codes.h"

#include <algorithm>

using orvelle::kLogInfo;
using orvelle::log;

namespace {

constexpr uint32_t kLoginTimeoutSec = 3;

}  // namespace

/// The right to open or close the session. Waiting for it replaces polling `connecting`.
class KvTUTKDevice::Turn {
public:
    explicit Turn(KvTUTKDevice& device) : m_device(device) {
        std::unique_lock<std::mutex> lock(device.m_turnMutex);
        device.m_turnFree.wait(lock, [&device] { return !device.m_turnTaken; });
        device.m_turnTaken = true;
    }
    ~Turn() {
        const std::lock_guard<std::mutex> lock(m_device.m_turnMutex);
        m_device.m_turnTaken = false;
        m_device.m_turnFree.notify_one();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    KvTUTKDevice& m_device;
};

int KvTUTKDevice::ensureConnected() {
    const Turn turn(*this);
    if (isConnected() && !isWorking())
        closeAll();
    if (isConnected()) {
        log("%s device inited\n", kLogInfo, qUtf8Printable(m_uid));
        return -1;
    }
    return isHeldBack() ? -1 : openAttempt();
}

int KvTUTKDevice::init() {
    const Turn turn(*this);
    closeAll();
    return openAttempt();
}

void KvTUTKDevice::uninit() {
    log("waiting connecting\n", kLogInfo);
    const Turn turn(*this);
    log("waiting connecting ended\n", kLogInfo);
    closeAll();
}

void KvTUTKDevice::noteNotFound(int result) {
    const Turn turn(*this);
    if (isOnline())
        return;
    closeAll();
    m_abort = Abort::kNone;
    noteFailure(result);
}

void KvTUTKDevice::cancelInit() {
    abortAttempt(Abort::kCancelled);
}

void KvTUTKDevice::requestStop() {
    cancelInit();
    stopLoops();
}

void KvTUTKDevice::onWatchdog(void* device) {
    static_cast<KvTUTKDevice*>(device)->abortAttempt(Abort::kTimedOut);
}

int KvTUTKDevice::openAttempt() {
    m_abort = Abort::kNone;
    if (!m_watchdog)
        m_watchdog = std::make_unique<KvTimer>(&KvTUTKDevice::onWatchdog, this);
    emit m_watchdog->startSignal(m_timing.watchdogMs);
    log("init set connecting = true\n", kLogInfo);
    m_connecting = true;
    const int opened = openSession();
    emit m_watchdog->stopSignal();
    const int result = m_abort == Abort::kNone ? opened : LINK_ER_ABORTED;
    if (result < 0) {
        log("%s init falied %d\n", kLogInfo, qUtf8Printable(m_uid), result);
        closeSession();
        noteFailure(result);
        log("init faild set connecting = false\n", kLogInfo);
        m_connecting = false;
        return -1;
    }
    holdBackNoMore();
    startLoops();
    log("%s init thread wait for join\n", kLogInfo, qUtf8Printable(m_uid));
    m_connecting = false;
    return 0;
}

int KvTUTKDevice::openSession() {
    const QByteArray uid = m_uid.toUtf8();
    const int sid = IOTC_Get_SessionID();
    m_sid = sid;
    log("init tutk IOTC_Connect_ByUID_Parallel(%s, %d)\n", kLogInfo, uid.constData(), sid);
    // A cancel that saw no session id yet is seen here; a later one stops the session itself.
    const int found = m_abort == Abort::kNone ? IOTC_Connect_ByUID_Parallel(uid.constData(), sid)
                                              : LINK_ER_ABORTED;
    log("init tutk IOTC_Connect_ByUID_Parallel(%s, %d) = %d\n", kLogInfo, uid.constData(), sid,
        found);
    if (found < 0 || sid < 0)
        return found < 0 ? found : sid;

    log("init tutk IOTC_Session_Check(%d)\n", kLogInfo, sid);
    LinkSessionInfo info{};
    const int checked = IOTC_Session_Check(sid, &info);
    log("init tutk IOTC_Session_Check(%d) = %d \n", kLogInfo, sid, checked);
    return login(sid);
}

int KvTUTKDevice::login(int sid) {
    m_channel = 0;
    log("init tutk avClientStart2(%d)\n", kLogInfo, sid);
    uint32_t serviceType = 0;
    int resend = 0;
    QByteArray password = this->password().toUtf8();
    const orvelle::WipedAtEnd<QByteArray> wiped(password);
    const int avIndex = avClientStart2(sid, orvelle::kLinkAccount, password.constData(),
                                       kLoginTimeoutSec, &serviceType, m_channel, &resend);
    log("init tutk avClientStart2(%d) = %d\n", kLogInfo, sid, avIndex);
    if (avIndex >= 0)
        m_avIndex = avIndex;
    return avIndex < 0 ? avIndex : 0;
}

void KvTUTKDevice::abortAttempt(Abort reason) {
    if (!m_connecting)
        return;
    Abort none = Abort::kNone;
    m_abort.compare_exchange_strong(none, reason);
    stopLoops();
    const int sid = m_sid;
    if (sid < 0)
        return;
    const int avIndex = m_avIndex;
    if (avIndex >= 0) {
        log("cancel init avClientExit(%d, %d)\n", kLogInfo, sid, avIndex);
        avClientExit(sid, static_cast<uint8_t>(avIndex));
    }
    log("cancel init IOTC_Connect_Stop_BySID(%d)\n", kLogInfo, sid);
    IOTC_Connect_Stop_BySID(sid);
}

void KvTUTKDevice::closeAll() {
    stopLoops();
    KvThread::stopAndDelete(m_recvThread);
    KvThread::stopAndDelete(m_sendThread);
    closeSession();
}

void KvTUTKDevice::closeSession() {
    m_requests.close();
    if (m_ownsSession && m_sid >= 0) {
        closeChannel();
        log("uninit tutk IOTC_Connect_Stop_BySID(%d)\n", kLogInfo, sid());
        IOTC_Connect_Stop_BySID(m_sid);
        log("uninit tutk IOTC_Session_Close(%d)\n", kLogInfo, sid());
        IOTC_Session_Close(m_sid);
        log("uninit tutk set _sid(%d) = -1\n", kLogInfo, sid());
    }
    m_sid = -1;
    m_channel = 0;
}

void KvTUTKDevice::closeChannel() {
    if (m_avIndex < 0)
        return;
    log("uninit tutk avClientExit(%d, %d)\n", kLogInfo, sid(), avIndex());
    avClientExit(m_sid, static_cast<uint8_t>(m_avIndex));
    log("uninit tutk avClientStop(%d)\n", kLogInfo, avIndex());
    avClientStop(m_avIndex);
    m_avIndex = -1;
}

void KvTUTKDevice::noteFailure(int result) {
    const Abort abort = m_abort;
    if (abort == Abort::kCancelled) {
        // Whoever cancels does so for a reason of his own, so what is known of the camera stays.
        if (m_state == State::kNeverTried)
            m_state = State::kCancelled;
        return;
    }
    State state = abort == Abort::kTimedOut ? State::kTimedOut : stateOfFailure(result);
    // Of this camera that is because of the password, and a new one is what helps.
    if (state == State::kRefusedForNow && m_state == State::kWrongPassword)
        state = State::kWrongPassword;
    if (state == State::kWrongPassword)
        holdBack(result == AV_ER_WRONG_VIEWACCorPWD);
    else
        holdBackNoMore();
    // A camera that stays off is tried every few seconds: one line for each new reason.
    if (m_state.exchange(state) != state)
        qCInfo(lcDevice) << m_uid << "cannot be reached:" << orvelle::linkResultText(result);
    m_lastResult = result;
}

void KvTUTKDevice::holdBack(bool isAnotherRefusal) {
    constexpr int kMaxDoublings = 16;
    const std::lock_guard<std::mutex> lock(m_passwordMutex);
    m_refusals = std::clamp(m_refusals + (isAnotherRefusal ? 1 : 0), 1, kMaxDoublings);
    const int64_t pauseMs =
        std::min<int64_t>(int64_t{m_timing.refusedMs} << (m_refusals - 1), m_timing.maxRefusedMs);
    m_heldBackUntil = std::chrono::steady_clock::now() + std::chrono::milliseconds(pauseMs);
}

bool KvTUTKDevice::isHeldBack() const {
    const std::lock_guard<std::mutex> lock(m_passwordMutex);
    return m_refusals > 0 && std::chrono::steady_clock::now() < m_heldBackUntil;
}

void KvTUTKDevice::holdBackNoMore() {
    const std::lock_guard<std::mutex> lock(m_passwordMutex);
    m_refusals = 0;
}

orvelle::DeviceState KvTUTKDevice::stateOfFailure(int result) {
    switch (result) {
        case AV_ER_WRONG_VIEWACCorPWD:
            return State::kWrongPassword;
        case AV_ER_NO_PERMISSION:
            return State::kFull;
        case LINK_ER_VERSION:
            return State::kWrongVersion;
        case LINK_ER_TOO_MANY_ATTEMPTS:
            return State::kRefusedForNow;
        case LINK_ER_NETWORK:
            return State::kNoNetwork;
        case LINK_ER_NO_FREE_CHANNEL:
        case LINK_ER_NO_FREE_SESSION:
            return State::kNoFreeChannel;
        case LINK_ER_REFUSED:
            return State::kRefused;
        default:
            return State::kUnreachable;
    }
}
