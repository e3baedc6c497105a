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
const std::vector<uint8_t> kEightZeros(8, 0);

struct Counter {
    static void call(void* self, KvTUTKResponse*) { ++static_cast<Counter*>(self)->calls; }
    std::atomic<int> calls{0};
};

bool isClosed(const KvTUTKDevice& device) {
    return device.sid() == -1 && device.avIndex() == -1 && !device.isConnected() &&
           !device.isWorking() && device.channel() == 0;
}

class DeviceSessionTest : public QObject {
    Q_OBJECT

private slots:
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
        QTRY_COMPARE(camera.lastPayload(), kEightZeros);
        std::vector<uint32_t> wanted{IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ};
        for (uint32_t i = 0; i < 40; ++i) {
            wanted.push_back(0x5000 + i);
            QVERIFY(device->sendIOCtrl(wanted.back(), &i, i % 5));
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
        QTRY_VERIFY(camera.types().size() >= 3);
        QCOMPARE(camera.types()[2], uint32_t(IOTYPE_USER_IPCAM_KEEPALIVE));
        QCOMPARE(camera.lastPayload(), kEightZeros);
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
        QTRY_COMPARE(camera.types(), std::vector<uint32_t>{IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ});
        device->uninit();
        QCOMPARE(device->state(), DeviceState::kClosed);
        QTRY_COMPARE(camera.clients(), 0);
        QCOMPARE(lost.load(), 1);
    }

    void hang_endsByCancelOrWatchdog() {
        qputenv("ORVELLE_LINK_UNBOUNDED", "1");
        for (const auto ending : {DeviceState::kCancelled, DeviceState::kTimedOut}) {
            const auto device = deviceFor(kUid);
            const bool isCancelled = ending == DeviceState::kCancelled;
            device->setTiming({isCancelled ? 3600 * 1000 : 100, 30000});
            std::thread worker([&device] { device->ensureConnected(); });
            while (isCancelled && device->state() != ending)
                device->cancelInit();
            worker.join();
            QCOMPARE(device->state(), ending);
            QVERIFY(isClosed(*device));
        }
        qunsetenv("ORVELLE_LINK_UNBOUNDED");
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
        QTRY_COMPARE(camera.types().size(), size_t(2));
    }
};

const orvelle::test::RegisterSuite<DeviceSessionTest> kRegistered;

}  // namespace

#include "device_session_test.moc"
