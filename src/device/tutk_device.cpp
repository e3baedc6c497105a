#include "device/tutk_device.h"

#include <QDebug>

#include <algorithm>
#include <array>

#include "core/thread.h"
#include "core/timer.h"
#include "core/wipe.h"
#include "device/device_input_factory.h"
#include "link/device_code.h"
#include "link/limits.h"

namespace {

bool isAsciiLetterOrDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z');
}

}  // namespace

KvTUTKDevice::KvTUTKDevice() = default;

KvTUTKDevice::KvTUTKDevice(const QString& deviceCode) {
    std::array<char, 1024> uidText{};
    std::array<char, 1024> passwordText{};
    if (GetDeUIDPasswd(deviceCode.toUtf8().constData(), uidText.data(), passwordText.data()) == 0) {
        const auto size = static_cast<int>(qstrnlen(uidText.data(), uidText.size()));
        if (isValidUid(uidText.data(), size))
            m_uid = QString::fromLatin1(uidText.data(), size);
        m_password = QString::fromUtf8(passwordText.data());
    }
    orvelle::wipe(passwordText.data(), passwordText.size());
    qDebug() << "uid = " << m_uid << ", password = " << (m_password.isEmpty() ? "" : "***");
}

KvTUTKDevice::KvTUTKDevice(const KvTUTKDevice& other)
    : m_name(other.m_name),
      m_ip(other.m_ip),
      m_uid(other.m_uid),
      m_port(other.m_port),
      m_volume(other.m_volume),
      m_ownsSession(false),
      m_mode(other.mode()),
      m_sid(other.sid()),
      m_avIndex(other.avIndex()),
      m_channel(other.channel()),
      m_password(other.password()) {}

KvTUTKDevice::~KvTUTKDevice() {
    requestStop();
    uninit();
    orvelle::wipe(m_password);
}

bool KvTUTKDevice::isValidUid(const char* text, int size) {
    return std::all_of(text, text + size, isAsciiLetterOrDigit);
}

bool KvTUTKDevice::isUsableUid(const QString& uid) {
    const QByteArray text = uid.toUtf8();
    return !text.isEmpty() && text.size() <= orvelle::kMaxUidLength &&
           isValidUid(text.constData(), text.size());
}

bool KvTUTKDevice::equals(const KvDevice* other) const {
    return hasSameUid(other) && other->type() == type();
}

bool KvTUTKDevice::hasSameUid(const KvDevice* other) const {
    return other && other->uid() == m_uid;
}

KvBasePlayerInput* KvTUTKDevice::createInput() {
    const orvelle::DeviceInputFactory factory = orvelle::deviceInputFactory();
    return factory ? factory(*this) : nullptr;
}

bool KvTUTKDevice::isFailure(State state) {
    return state == State::kUnreachable || state == State::kWrongPassword ||
           state == State::kWrongVersion || state == State::kFull ||
           state == State::kRefusedForNow || state == State::kRefused ||
           state == State::kNoNetwork || state == State::kNoFreeChannel ||
           state == State::kTimedOut;
}

QString KvTUTKDevice::password() const {
    const std::lock_guard<std::mutex> lock(m_passwordMutex);
    return m_password;
}

void KvTUTKDevice::setPassword(const QString& password) {
    const std::lock_guard<std::mutex> lock(m_passwordMutex);
    orvelle::wipe(m_password);
    m_password = password;
}

void KvTUTKDevice::changePassword(const QString& password) {
    setPassword(password);
    holdBackNoMore();
    State refused = State::kWrongPassword;
    m_state.compare_exchange_strong(refused, State::kNeverTried);
}

orvelle::DeviceState KvTUTKDevice::state() const {
    const State state = m_state;
    // A camera that stays off is tried every few seconds; what stands against it stays in sight.
    if (m_connecting && !isFailure(state))
        return State::kConnecting;
    return state == State::kOnline && !isOnline() ? State::kClosed : state;
}

void KvTUTKDevice::setSessionLostCallback(std::function<void()> callback) {
    const std::lock_guard<std::mutex> lock(m_callbackMutex);
    m_sessionLost = std::move(callback);
}

void KvTUTKDevice::addListener(void* object, ListenerCallback callback) {
    m_listeners.add(object, callback);
}

void KvTUTKDevice::removeListener(void* object) {
    m_listeners.remove(object);
}
