#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "device/tutk_device.h"
#include "link/result_codes.h"
#include "support/suites.h"
#include "test_camera.h"

using orvelle::DeviceState;
using orvelle::test::deviceFor;
using orvelle::test::TestCamera;

namespace {

const QString kUid = QStringLiteral("SESSIONCAM1");

struct Counter {
    static void call(void* self, KvTUTKResponse*) { ++static_cast<Counter*>(self)->calls; }
    std::atomic<int> calls{0};
};

class SilentPort {
public:
    SilentPort() {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (bind(m_socket, generic, size) == 0 && getsockname(m_socket, generic, &size) == 0)
            m_port = ntohs(address.sin_port);
    }
    ~SilentPort() { close(m_socket); }
    QByteArray entry() const { return "SESSIONCAM1=127.0.0.1:" + QByteArray::number(m_port); }

private:
    const int m_socket = socket(AF_INET, SOCK_DGRAM, 0);
    int m_port = 0;
};

bool isClosed(const KvTUTKDevice& device) {
    return device.sid() == -1 && device.avIndex() == -1 && !device.isConnected() &&
           !device.isWorking() && device.channel() == 0;
}

class DeviceSessionTest : public QObject {
    Q_OBJECT

private slots:
    void cleanup() {
        qunsetenv("ORVELLE_LINK_UNBOUNDED");
        qunsetenv("ORVELLE_CAMERA_ADDRESSES");
    }

    void outcome_saysWhy() {
        const struct {
            bool isOn;
            const char* password;
            int result;
            DeviceState state;
            int code;
        } cases[] = {
            {true, "right", 0, DeviceState::kOnline, 0},
            {true, "wrong", -1, DeviceState::kWrongPassword, AV_ER_WRONG_VIEWACCorPWD},
            {true, "", -1, DeviceState::kWrongPassword, AV_ER_WRONG_VIEWACCorPWD},
            {false, "right", -1, DeviceState::kUnreachable, LINK_ER_NOT_FOUND},
        };
        for (const auto& [isOn, password, result, state, code] : cases) {
            TestCamera camera(kUid);
            QVERIFY(!isOn || camera.start());
            const auto device = deviceFor(kUid, password);
            QCOMPARE(device->state(), DeviceState::kNeverTried);
            QCOMPARE(device->init(), result);
            QCOMPARE(device->state(), state);
            QCOMPARE(device->lastResult(), code);
            QVERIFY(result == 0 ? device->isOnline() : isClosed(*device));
            device->uninit();
            QVERIFY(isClosed(*device) && !device->sendIOCtrl(IOTYPE_USER_IPCAM_START));
        }
    }

    void commands_arriveInOrder_andListenersHearTheReplies() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        const auto device = deviceFor(kUid);
        QVERIFY(!device->sendIOCtrl(IOTYPE_USER_IPCAM_PTZ_COMMAND));
        Counter counter;
        device->addListener(&counter, Counter::call);
        QCOMPARE(device->ensureConnected(), 0);
        QCOMPARE(device->ensureConnected(), -1);
        QTRY_COMPARE(camera.lastPayload(), QByteArray("0000000000000000"));
        QVector<uint32_t> wanted{IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ};
        for (uint32_t i = 0; i < 40; ++i) {
            wanted.append(0x5000 + i);
            QVERIFY(device->sendIOCtrl(wanted.last(), &i, i % 5));
        }
        QVERIFY(!device->sendIOCtrl(1, nullptr, 4) && !device->sendIOCtrl(1, "x", -1));
        QTRY_COMPARE(camera.types(), wanted);
        QTRY_COMPARE(counter.calls.load(), 1);
        QCOMPARE(device->mode(), 2);
        camera.send(IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_RESP, QByteArray("\7\0\0", 3));
        QTRY_COMPARE(counter.calls.load(), 2);
        QCOMPARE(device->mode(), 2);
        device->removeListener(&counter);
        camera.send(IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_RESP, QByteArray("\5\0\0\0\1", 5));
        QTRY_COMPARE(device->mode(), 5);
        QCOMPARE(counter.calls.load(), 2);
    }

    void keepAlive_followsIdleTime() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        const auto device = deviceFor(kUid);
        device->setTiming({20000, 50});
        QCOMPARE(device->init(), 0);
        QTRY_COMPARE(camera.types().value(2), uint32_t(IOTYPE_USER_IPCAM_KEEPALIVE));
        QCOMPARE(camera.lastPayload(), QByteArray("0000000000000000"));
    }

    void session_isLostAtOnce_andComesBack_whenTheCameraRestarts() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        const auto device = deviceFor(kUid);
        std::atomic<int> lost{0};
        device->setSessionLostCallback([&lost] { ++lost; });
        QCOMPARE(device->init(), 0);
        const int firstSid = device->sid();
        camera.stop();
        QTRY_COMPARE(lost.load(), 1);
        QVERIFY(!device->isOnline() && device->isConnected());
        QCOMPARE(device->state(), DeviceState::kClosedByCamera);
        QCOMPARE(device->lastResult(), int(AV_ER_SESSION_CLOSE_BY_REMOTE));
        QVERIFY(!device->sendIOCtrl(IOTYPE_USER_IPCAM_PTZ_COMMAND));
        QVERIFY(camera.start());
        QCOMPARE(device->ensureConnected(), 0);
        QVERIFY(device->isOnline() && device->sid() != firstSid);
        QTRY_COMPARE(camera.types(), QVector<uint32_t>({IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ}));
        device->uninit();
        QCOMPARE(device->state(), DeviceState::kClosed);
        QTRY_COMPARE(camera.clients(), 0);
        QCOMPARE(lost.load(), 1);
    }

    void hang_endsByCancelOrWatchdog_whileFindingAndLoggingIn() {
        qputenv("ORVELLE_LINK_UNBOUNDED", "1");
        // A socket that never answers makes the login hang instead of the search.
        const SilentPort silent;
        for (const QByteArray& addresses : {QByteArray(), silent.entry()}) {
            qputenv("ORVELLE_CAMERA_ADDRESSES", addresses);
            for (const auto ending : {DeviceState::kCancelled, DeviceState::kTimedOut}) {
                const auto device = deviceFor(kUid);
                const bool isCancelled = ending == DeviceState::kCancelled;
                device->setTiming({isCancelled ? 3600 * 1000 : 100, 30000});
                device->cancelInit();
                std::thread worker([&device] { device->ensureConnected(); });
                while (isCancelled && device->state() != ending)
                    device->cancelInit();
                worker.join();
                QCOMPARE(device->state(), ending);
                QVERIFY(isClosed(*device));
            }
        }
    }

    void session_isLeftAlone_byCancelAndByCopies() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        const auto device = deviceFor(kUid);
        QCOMPARE(device->init(), 0);
        device->cancelInit();
        { const KvTUTKDevice copy(*device); }
        const KvTUTKDevice copy(*device);
        QVERIFY(copy.isConnected() && !copy.isWorking() && device->isOnline());
        QVERIFY(device->sendIOCtrl(IOTYPE_USER_IPCAM_DEVINFO_REQ));
        QTRY_COMPARE(camera.types().size(), 2);
    }

    void destruction_isClean_whileCommandsAndListenersAreBusy() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        for (int round = 0; round < 3; ++round) {
            Counter counter;
            auto device = deviceFor(kUid);
            device->addListener(&counter, Counter::call);
            QCOMPARE(device->init(), 0);
            for (int i = 0; i < 20; ++i)
                device->sendIOCtrl(IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ);
            device.reset();
            QTRY_COMPARE(camera.clients(), 0);
        }
    }
};

const orvelle::test::RegisterSuite<DeviceSessionTest> kRegistered;

}  // namespace

#include "device_session_test.moc"
