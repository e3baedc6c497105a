#pragma once

#include <QByteArray>
#include <QVector>

#include <atomic>
#include <memory>
#include <mutex>

#include "link/av.h"
#include "link/iotc.h"
#include "link/result_codes.h"
#include "link/server/link_server.h"

namespace orvelle::test {

constexpr char kUid[] = "TESTCAMERA0123456789";
constexpr char kPassword[] = "correct horse";

/// A camera on this machine that notes what its clients do.
class TestCamera : public LinkServerListener {
public:
    explicit TestCamera(const char* uid = kUid, const char* password = kPassword);
    ~TestCamera() override { m_server.reset(); }

    LinkServer& server() { return *m_server; }
    int lastClient() const { return m_lastClient; }
    int connected() const { return m_connected; }
    int orderlyGone() const { return m_orderlyGone; }
    int lostGone() const { return m_lostGone; }
    QVector<QByteArray> controls() const;

    /// A frame of `size` bytes; from 8 bytes on it begins with nowMs() of its sending.
    int sendVideo(size_t size, bool isKey);
    int sendAudio(size_t size);

    void clientConnected(int clientId) override;
    void controlReceived(int clientId, uint32_t type, const uint8_t* data, size_t size) override;
    void clientDisconnected(int clientId, bool orderly) override;

private:
    std::atomic<int> m_lastClient{-1};
    std::atomic<int> m_connected{0};
    std::atomic<int> m_orderlyGone{0};
    std::atomic<int> m_lostGone{0};
    mutable std::mutex m_mutex;  ///< guards m_controls
    QVector<QByteArray> m_controls;
    std::unique_ptr<LinkServer> m_server;  ///< goes first: its thread calls the above
};

/// A picture or sound as the client got it.
struct ReceivedFrame {
    int code = AV_ER_DATA_NOREADY;  ///< size, or why there is none
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
              const char* account = "admin");
    /// Both; the AV index or a negative code.
    int connect(const char* uid = kUid, const char* password = kPassword);
    void close();

    /// Waits for a picture (or a code other than "none yet").
    ReceivedFrame video(int timeoutMs = 5000);
    ReceivedFrame audio(int timeoutMs = 5000);
    /// Size, or the code; the payload goes to `data`.
    int control(uint32_t* type, QByteArray* data, uint32_t timeoutMs = 5000);

private:
    int m_sid;
    int m_av = -1;
};

/// Lets the client look for `uid` at this port of 127.0.0.1 only, until it goes.
class AddressOverride {
public:
    AddressOverride(const char* uid, uint16_t port);
    ~AddressOverride() { qunsetenv("ORVELLE_CAMERA_ADDRESSES"); }
};

int64_t nowMs();

}  // namespace orvelle::test
