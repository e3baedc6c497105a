#include "link_fixture.h"

#include <cstring>

#include "link/clock.h"

namespace orvelle::test {

TestCamera::TestCamera(const char* uid, const char* password) {
    LinkServerConfig config;
    config.uid = uid;
    config.password = password;
    config.deviceName = "Test camera";
    m_server = std::make_unique<LinkServer>(config, this);
    if (m_server->start() != 0)
        qFatal("the test camera does not start");
}

QVector<QByteArray> TestCamera::controls() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_controls;
}

int TestCamera::sendVideo(size_t size, bool isKey) {
    auto frame = std::make_shared<std::vector<uint8_t>>(size, uint8_t{0x5A});
    const int64_t sentMs = nowMs();
    if (size >= sizeof sentMs)
        std::memcpy(frame->data(), &sentMs, sizeof sentMs);
    return m_server->sendVideo(m_lastClient, 0, {0x4E, uint8_t(isKey), uint32_t(sentMs)}, frame);
}

int TestCamera::sendAudio(size_t size) {
    return m_server->sendAudio(m_lastClient, 0, {0x88, 0, 0},
                               std::make_shared<std::vector<uint8_t>>(size, uint8_t{0xA5}));
}

void TestCamera::clientConnected(int clientId) {
    m_lastClient = clientId;
    ++m_connected;
}

void TestCamera::controlReceived(int, uint32_t type, const uint8_t* data, size_t size) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_controls.append(QByteArray::number(type, 16) + ':' +
                      QByteArray(reinterpret_cast<const char*>(data), int(size)));
}

void TestCamera::clientDisconnected(int, bool orderly) {
    ++(orderly ? m_orderlyGone : m_lostGone);
}

int TestClient::logIn(const char* password, uint32_t timeoutSec, const char* account) {
    m_av = avClientStart2(m_sid, account, password, timeoutSec, nullptr, 0, nullptr);
    return m_av;
}

int TestClient::connect(const char* uid, const char* password) {
    const int found = find(uid);
    return found < 0 ? found : logIn(password);
}

void TestClient::close() {
    if (m_av >= 0)
        avClientStop(m_av);
    m_av = -1;
    IOTC_Session_Close(m_sid);
}

ReceivedFrame TestClient::video(int timeoutMs) {
    avWaitVideo(m_av, timeoutMs, {});
    ReceivedFrame frame;
    QByteArray buffer(kMaxVideoFrameBytes, 0);
    char info[kFrameInfoBytes];
    int size = 0, expected = 0, infoSize = 0;
    frame.code = avRecvFrameData2(m_av, buffer.data(), buffer.size(), &size, &expected, info,
                                  sizeof info, &infoSize, &frame.number);
    frame.data = buffer.left(std::max(frame.code, 0));
    frame.info = QByteArray(info, infoSize);
    return frame;
}

ReceivedFrame TestClient::audio(int timeoutMs) {
    avWaitAudio(m_av, 0, timeoutMs, {});
    ReceivedFrame frame;
    QByteArray buffer(kMaxAudioFrameBytes, 0);
    char info[kFrameInfoBytes];
    frame.code =
        avRecvAudioData(m_av, buffer.data(), buffer.size(), info, sizeof info, &frame.number);
    frame.data = buffer.left(std::max(frame.code, 0));
    return frame;
}

int TestClient::control(uint32_t* type, QByteArray* data, uint32_t timeoutMs) {
    char buffer[kMaxControlBytes];
    const int size = avRecvIOCtrl(m_av, type, buffer, sizeof buffer, timeoutMs);
    *data = QByteArray(buffer, std::max(size, 0));
    return size;
}

AddressOverride::AddressOverride(const char* uid, uint16_t port) {
    qputenv("ORVELLE_CAMERA_ADDRESSES",
            QByteArray("OTHER=127.0.0.1:9,") + uid + "=127.0.0.1:" + QByteArray::number(port));
}

int64_t nowMs() {
    return steadyMilliseconds();
}

}  // namespace orvelle::test
