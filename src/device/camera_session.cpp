#include "device/camera_session.h"

#include <algorithm>

#include "core/log.h"
#include "core/timer.h"
#include "core/wipe.h"
#include "device/command_channel.h"
#include "device/logging.h"
#include "link/av.h"
#include "link/iotc.h"
#include "link/limits.h"
#include "link/result_codes.h"

namespace orvelle {

namespace {

constexpr uint32_t kLoginTimeoutSec = 3;

}  // namespace

void RefusalPause::begin(bool isAnotherRefusal, int firstMs, int maxMs) {
    constexpr int kMaxDoublings = 16;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_refusals = std::clamp(m_refusals + (isAnotherRefusal ? 1 : 0), 1, kMaxDoublings);
    const int64_t pauseMs = std::min<int64_t>(int64_t{firstMs} << (m_refusals - 1), maxMs);
    m_until = std::chrono::steady_clock::now() + std::chrono::milliseconds(pauseMs);
}

void RefusalPause::end() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_refusals = 0;
}

bool RefusalPause::isOn() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_refusals > 0 && std::chrono::steady_clock::now() < m_until;
}

/// The right to open or close the session. Waiting for it replaces polling `connecting`.
class CameraSession::Turn {
public:
    explicit Turn(CameraSession& session) : m_session(session) {
        std::unique_lock<std::mutex> lock(session.m_turnMutex);
        session.m_turnFree.wait(lock, [&session] { return !session.m_turnTaken; });
        session.m_turnTaken = true;
    }
    ~Turn() {
        const std::lock_guard<std::mutex> lock(m_session.m_turnMutex);
        m_session.m_turnTaken = false;
        m_session.m_turnFree.notify_one();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    CameraSession& m_session;
};

CameraSession::CameraSession(CommandChannel& channel, std::function<Account()> account)
    : m_commands(channel), m_account(std::move(account)) {}

CameraSession::~CameraSession() {
    requestStop();
    close();
}

void CameraSession::setLostCallback(std::function<void()> callback) {
    const std::lock_guard<std::mutex> lock(m_callbackMutex);
    m_lost = std::move(callback);
}

bool CameraSession::isOnline() const {
    return isOpen() && m_commands.isOpen();
}

DeviceState CameraSession::state() const {
    const State state = m_state;
    // A camera that stays off is tried every few seconds; what stands against it stays in sight.
    if (m_connecting && !isFailure(state))
        return State::kConnecting;
    return state == State::kOnline && !isOnline() ? State::kClosed : state;
}

bool CameraSession::isFailure(State state) {
    return state == State::kUnreachable || state == State::kWrongPassword ||
           state == State::kWrongVersion || state == State::kFull ||
           state == State::kRefusedForNow || state == State::kRefused ||
           state == State::kNoNetwork || state == State::kNoFreeChannel ||
           state == State::kTimedOut;
}

void CameraSession::forgetRefusal() {
    m_refusal.end();
    State refused = State::kWrongPassword;
    m_state.compare_exchange_strong(refused, State::kNeverTried);
}

int CameraSession::ensureOpen() {
    const Turn turn(*this);
    if (isOpen() && !m_commands.isOpen())
        closeAll();
    if (isOpen()) {
        log("%s device inited\n", kLogInfo, qUtf8Printable(m_account().uid));
        return -1;
    }
    return m_refusal.isOn() ? -1 : attempt();
}

int CameraSession::open() {
    const Turn turn(*this);
    closeAll();
    return attempt();
}

void CameraSession::close() {
    log("waiting connecting\n", kLogInfo);
    const Turn turn(*this);
    log("waiting connecting ended\n", kLogInfo);
    closeAll();
}

void CameraSession::noteFailureToFind(int result) {
    const Turn turn(*this);
    if (isOnline())
        return;
    closeAll();
    m_abort = Abort::kNone;
    noteFailure(result);
}

void CameraSession::cancel() {
    abortAttempt(Abort::kCancelled);
}

void CameraSession::requestStop() {
    cancel();
    m_commands.stop();
}

void CameraSession::onWatchdog(void* session) {
    static_cast<CameraSession*>(session)->abortAttempt(Abort::kTimedOut);
}

int CameraSession::attempt() {
    m_abort = Abort::kNone;
    if (!m_watchdog)
        m_watchdog = std::make_unique<KvTimer>(&CameraSession::onWatchdog, this);
    Account account = m_account();
    const WipedAtEnd<QString> wiped(account.password);
    const QByteArray uid = account.uid.toUtf8();
    emit m_watchdog->startSignal(m_timing.watchdogMs);
    log("init set connecting = true\n", kLogInfo);
    m_connecting = true;
    const int opened = connectAndLogIn(account);
    emit m_watchdog->stopSignal();
    const int result = m_abort == Abort::kNone ? opened : LINK_ER_ABORTED;
    if (result < 0) {
        log("%s init falied %d\n", kLogInfo, uid.constData(), result);
        closeHandles();
        noteFailure(result);
        log("init faild set connecting = false\n", kLogInfo);
        m_connecting = false;
        return -1;
    }
    m_refusal.end();
    began(account.uid);
    log("%s init thread wait for join\n", kLogInfo, uid.constData());
    m_connecting = false;
    return 0;
}

void CameraSession::began(const QString& uid) {
    m_lastResult = 0;
    m_state = State::kOnline;
    m_commands.open({uid, m_avIndex, m_timing.keepAliveMs, [this](int result) { broke(result); }});
}

void CameraSession::broke(int result) {
    m_lastResult = result;
    m_state = result == AV_ER_SESSION_CLOSE_BY_REMOTE ? State::kClosedByCamera : State::kLost;
    qCInfo(lcDevice) << m_account().uid << "ended its session:" << linkResultText(result);
    std::function<void()> lost;
    {
        const std::lock_guard<std::mutex> lock(m_callbackMutex);
        lost = m_lost;
    }
    if (lost)
        lost();
}

int CameraSession::connectAndLogIn(const Account& account) {
    const QByteArray uid = account.uid.toUtf8();
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
    return login(account, sid);
}

int CameraSession::login(const Account& account, int sid) {
    m_channelNumber = 0;
    log("init tutk avClientStart2(%d)\n", kLogInfo, sid);
    uint32_t serviceType = 0;
    int resend = 0;
    QByteArray password = account.password.toUtf8();
    const WipedAtEnd<QByteArray> wiped(password);
    const int avIndex = avClientStart2(sid, kLinkAccount, password.constData(), kLoginTimeoutSec,
                                       &serviceType, m_channelNumber, &resend);
    log("init tutk avClientStart2(%d) = %d\n", kLogInfo, sid, avIndex);
    if (avIndex >= 0)
        m_avIndex = avIndex;
    return avIndex < 0 ? avIndex : 0;
}

void CameraSession::abortAttempt(Abort reason) {
    if (!m_connecting)
        return;
    Abort none = Abort::kNone;
    m_abort.compare_exchange_strong(none, reason);
    m_commands.stop();
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

void CameraSession::closeAll() {
    m_commands.close();
    closeHandles();
}

void CameraSession::closeHandles() {
    if (m_sid >= 0) {
        closeAvChannel();
        log("uninit tutk IOTC_Connect_Stop_BySID(%d)\n", kLogInfo, sid());
        IOTC_Connect_Stop_BySID(m_sid);
        log("uninit tutk IOTC_Session_Close(%d)\n", kLogInfo, sid());
        IOTC_Session_Close(m_sid);
        log("uninit tutk set _sid(%d) = -1\n", kLogInfo, sid());
    }
    m_sid = -1;
    m_channelNumber = 0;
}

void CameraSession::closeAvChannel() {
    if (m_avIndex < 0)
        return;
    log("uninit tutk avClientExit(%d, %d)\n", kLogInfo, sid(), avIndex());
    avClientExit(m_sid, static_cast<uint8_t>(m_avIndex));
    log("uninit tutk avClientStop(%d)\n", kLogInfo, avIndex());
    avClientStop(m_avIndex);
    m_avIndex = -1;
}

void CameraSession::noteFailure(int result) {
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
        m_refusal.begin(result == AV_ER_WRONG_VIEWACCorPWD, m_timing.refusedMs,
                        m_timing.maxRefusedMs);
    else
        m_refusal.end();
    // A camera that stays off is tried every few seconds: one line for each new reason.
    if (m_state.exchange(state) != state)
        qCInfo(lcDevice) << m_account().uid << "cannot be reached:" << linkResultText(result);
    m_lastResult = result;
}

DeviceState CameraSession::stateOfFailure(int result) {
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
        case LINK_ER_NO_SOCKET:
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

}  // namespace orvelle
