#pragma once

#include <QtTest>

#include <atomic>
#include <cstring>
#include <mutex>
#include <thread>

#include "link/av.h"
#include "link/client/link_client.h"
#include "link/clock.h"
#include "link/iotc.h"
#include "link/result_codes.h"
#include "link/server/link_server.h"
#include "support/suites.h"

namespace orvelle::test {

constexpr char kUid[] = "TESTCAMERA0123456789";
constexpr char kPassword[] = "correct horse";

/// Base of the suites that use the client: each starts the link and ends it again.
class LinkSuite : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QCOMPARE(IOTC_Initialize2(0), 0);
        QCOMPARE(avInitialize(32), 32);
    }
    void cleanupTestCase() { LinkClient::instance().shutDown(); }
};

/// A camera on this machine that notes what its clients do.
class TestCamera : public LinkServerListener {
public:
    explicit TestCamera(const char* uid = kUid) {
        LinkServerConfig config;
        config.uid = uid;
        config.password = kPassword;
        config.deviceName = "Test camera";
        m_server = std::make_unique<LinkServer>(config, this);
        if (m_server->start() != 0)
            qFatal("the test camera does not start");
    }
    ~TestCamera() override { m_server.reset(); }

    LinkServer& server() { return *m_server; }
    int lastClient() const { return m_lastClient; }
    int connected() const { return m_connected; }
    int orderlyGone() const { return m_orderlyGone; }
    int lostGone() const { return m_lostGone; }
    /// As "<type in hex>:<payload>".
    QVector<QByteArray> controls() const {
        std::lock_guard<std::mutex> lock(m_mutex);
        QVector<QByteArray> copy = m_controls;
        copy.detach();  // else the two would share their count outside the lock
        return copy;
    }

    /// A frame of `size` bytes; from 8 bytes on it begins with the time of its sending.
    int sendVideo(size_t size, bool isKey) {
        auto frame = std::make_shared<std::vector<uint8_t>>(size, uint8_t{0x5A});
        const int64_t sentMs = steadyMilliseconds();
        if (size >= sizeof sentMs)
            std::memcpy(frame->data(), &sentMs, sizeof sentMs);
        return m_server->sendVideo(m_lastClient, 0, {0x4E, uint8_t(isKey), 0}, frame);
    }
    int sendAudio(size_t size) {
        return m_server->sendAudio(m_lastClient, 0, {0x88, 0, 0},
                                   std::make_shared<std::vector<uint8_t>>(size, uint8_t{0xA5}));
    }

    void clientConnected(int clientId) override {
        m_lastClient = clientId;
        ++m_connected;
    }
    void controlReceived(int, uint32_t type, const uint8_t* data, size_t size) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_controls.append(QByteArray::number(type, 16) + ':' +
                          QByteArray(reinterpret_cast<const char*>(data), int(size)));
    }
    void clientDisconnected(int, bool orderly) override {
        ++(orderly ? m_orderlyGone : m_lostGone);
    }

private:
    std::atomic<int> m_lastClient{-1}, m_connected{0}, m_orderlyGone{0}, m_lostGone{0};
    mutable std::mutex m_mutex;  ///< guards m_controls
    QVector<QByteArray> m_controls;
    std::unique_ptr<LinkServer> m_server;  ///< goes first: its thread calls the above
};

/// A picture or sound as the client got it.
struct ReceivedFrame {
    int code = 0;  ///< size, or why there is none
    uint32_t number = 0;
    QByteArray data;
    QByteArray info;
};

/// One session with channel 0 of a camera.
class TestClient {
public:
    TestClient() : m_sid(IOTC_Get_SessionID()) {}
    ~TestClient() { close(); }

    int sid() const { return m_sid; }
    int av() const { return m_av; }
    int find(const char* uid = kUid) { return IOTC_Connect_ByUID_Parallel(uid, m_sid); }
    int logIn(const char* password = kPassword, uint32_t timeoutSec = 10,
              const char* account = "admin") {
        m_av = avClientStart2(m_sid, account, password, timeoutSec, nullptr, 0, nullptr);
        return m_av;
    }
    /// Both; the AV index or a negative code.
    int connect() {
        const int found = find();
        return found < 0 ? found : logIn();
    }
    void close() {
        if (m_av >= 0)
            avClientStop(m_av);
        m_av = -1;
        IOTC_Session_Close(m_sid);
    }

    /// Wait for a frame, or a code other than "none yet".
    ReceivedFrame video(int timeoutMs = 5000) {
        avWaitVideo(m_av, timeoutMs, {});
        ReceivedFrame frame;
        QByteArray buffer(kMaxVideoFrameBytes, 0);
        char info[kFrameInfoBytes];
        int infoSize = 0;
        frame.code = avRecvFrameData2(m_av, buffer.data(), buffer.size(), nullptr, nullptr, info,
                                      sizeof info, &infoSize, &frame.number);
        frame.data = buffer.left(std::max(frame.code, 0));
        frame.info = QByteArray(info, infoSize);
        return frame;
    }
    QByteArray audio() {
        avWaitAudio(m_av, 0, 5000, {});
        char buffer[kMaxAudioFrameBytes], info[kFrameInfoBytes];
        uint32_t number = 0;
        return QByteArray(buffer, std::max(0, avRecvAudioData(m_av, buffer, sizeof buffer, info,
                                                              sizeof info, &number)));
    }
    /// Size, or the code; "<type in hex>:<payload>" goes to `message`.
    int control(QByteArray* message) {
        char buffer[kMaxControlBytes];
        uint32_t type = 0;
        const int size = avRecvIOCtrl(m_av, &type, buffer, sizeof buffer, 8000);
        *message = QByteArray::number(type, 16) + ':' + QByteArray(buffer, std::max(size, 0));
        return size;
    }

private:
    int m_sid;
    int m_av = -1;
};

/// Sends pictures until one arrives, since a camera drops what waited for long on a busy machine;
/// the size of that one, or why none came.
inline int pictureAcross(TestCamera& camera, int clientId, TestClient& client, int size) {
    int code = AV_ER_DATA_NOREADY;
    for (int i = 0; i < 20 && (code == AV_ER_DATA_NOREADY || code == AV_ER_LOSED_THIS_FRAME); ++i) {
        const auto picture = std::make_shared<std::vector<uint8_t>>(size_t(size), uint8_t{0x5A});
        camera.server().sendVideo(clientId, 0, {0x4E, 1, 0}, picture);
        code = client.video(500).code;
    }
    return code;
}

/// Lets the client look for `uid` at this port of 127.0.0.1 first, until it goes.
class AddressOverride {
public:
    AddressOverride(const char* uid, uint16_t port) {
        qputenv("ORVELLE_CAMERA_ADDRESSES",
                QByteArray("OTHER=127.0.0.1:9,") + uid + "=127.0.0.1:" + QByteArray::number(port));
    }
    ~AddressOverride() { qunsetenv("ORVELLE_CAMERA_ADDRESSES"); }
};

/// Connects through a relay, past which the search would otherwise find the camera.
inline int connectThrough(uint16_t relayPort, TestClient& client) {
    const AddressOverride address(kUid, relayPort);
    const QByteArray port = qgetenv("ORVELLE_DISCOVERY_PORT");
    qputenv("ORVELLE_DISCOVERY_PORT", "9");
    const int av = client.connect();
    qputenv("ORVELLE_DISCOVERY_PORT", port);
    return av;
}

}  // namespace orvelle::test
