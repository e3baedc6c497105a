#include <functional>
#include <thread>

#include "device/tutk_device.h"
#include "link/result_codes.h"
#include "support/suites.h"
#include "support/test_camera.h"

using orvelle::DeviceState;
using orvelle::test::deviceFor;
using orvelle::test::TestCamera;

namespace {

const QString kUid = QStringLiteral("SESSIONCAM1");

struct Listener {
    static void call(void* self, KvTUTKResponse*) { static_cast<Listener*>(self)->action(); }
    std::function<void()> action;
};

bool isClosed(const KvTUTKDevice& device) {
    return device.sid() == -1 && device.avIndex() == -1 && !device.isWorking();
}

class DeviceSessionTest : public QObject {
    Q_OBJECT

private slots:
    void listeners_areCalledInOrder_andMayChangeTheTableMeanwhile() {
        orvelle::ResponseListeners table;
        QString heard;
        Listener late{[&] { heard += QLatin1Char('L'); }};
        Listener gone{[&] { heard += QLatin1Char('G'); }};
        Listener changer;
        changer.action = [&] {
            heard += QLatin1Char('C');
            table.remove(&changer);
            table.remove(&gone);
            table.add(&late, Listener::call);
        };
        for (Listener* listener : {&changer, &gone, &changer})
            table.add(listener, Listener::call);
        KvTUTKResponse response;
        table.dispatch(response);
        table.dispatch(response);
        QCOMPARE(heard, QStringLiteral("CLL"));
    }

    void removal_waitsForTheRunningCall_fromAnotherThread() {
        orvelle::ResponseListeners table;
        std::atomic<bool> isIn{false};
        std::atomic<bool> isRemoving{false};
        bool isDone = false;  // plain: the removal alone must order it
        Listener slow{[&] {
            isIn = true;
            while (!isRemoving)
                std::this_thread::yield();
            isDone = true;
        }};
        table.add(&slow, Listener::call);
        KvTUTKResponse response;
        std::thread receiver([&] { table.dispatch(response); });
        while (!isIn)
            std::this_thread::yield();
        isRemoving = true;
        table.remove(&slow);
        const bool wasDone = isDone;
        receiver.join();
        QVERIFY(wasDone);
    }

    void outcome_saysWhy() {
        const std::tuple<bool, const char*, int, DeviceState, int> cases[] = {
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

    void everyRefusal_hasAStateOfItsOwn() {
        const std::pair<int, DeviceState> cases[] = {
            {AV_ER_WRONG_VIEWACCorPWD, DeviceState::kWrongPassword},
            {LINK_ER_VERSION, DeviceState::kWrongVersion},
            {AV_ER_NO_PERMISSION, DeviceState::kFull},
            {LINK_ER_TOO_MANY_ATTEMPTS, DeviceState::kRefusedForNow},
            {LINK_ER_REFUSED, DeviceState::kRefused},
            {LINK_ER_NETWORK, DeviceState::kNoNetwork},
            {LINK_ER_NO_SOCKET, DeviceState::kNoNetwork},
            {LINK_ER_NO_FREE_CHANNEL, DeviceState::kNoFreeChannel},
            {LINK_ER_NOT_FOUND, DeviceState::kUnreachable},
            {AV_ER_TIMEOUT, DeviceState::kUnreachable},
        };
        for (const auto& [result, state] : cases)
            QCOMPARE(KvTUTKDevice::stateOfFailure(result), state);
    }

    void refusedPassword_isNotTriedAtEveryTurn() {
        for (const bool isPatient : {true, false}) {
            TestCamera camera(kUid);
            QVERIFY(camera.start());
            const auto device = deviceFor(kUid, "wrong");
            device->setTiming({20000, 30000, isPatient ? 3600 * 1000 : 1, 3600 * 1000});
            QCOMPARE(device->ensureConnected(), -1);
            QCOMPARE(device->state(), DeviceState::kWrongPassword);
            camera.stop();
            QThread::msleep(2);
            QCOMPARE(device->ensureConnected(), -1);
            QCOMPARE(device->state(),
                     isPatient ? DeviceState::kWrongPassword : DeviceState::kUnreachable);
            QVERIFY(camera.start());
            device->changePassword(QLatin1String(TestCamera::kPassword));
            QCOMPARE(device->state(),
                     isPatient ? DeviceState::kNeverTried : DeviceState::kUnreachable);
            QCOMPARE(device->ensureConnected(), 0);
        }
    }

    void commands_arriveInOrder_andListenersHearTheReplies() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        const auto device = deviceFor(kUid);
        QVERIFY(!device->sendIOCtrl(IOTYPE_USER_IPCAM_PTZ_COMMAND));
        std::atomic<int> heard{0};
        Listener listener{[&heard] { ++heard; }};
        device->addListener(&listener, Listener::call);
        QCOMPARE(device->ensureConnected(), 0);
        QCOMPARE(device->ensureConnected(), -1);
        QTRY_VERIFY(camera.wereLastEightZeros());
        std::vector<uint32_t> wanted{IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ};
        for (uint32_t i = 0; i < 40; ++i) {
            wanted.push_back(0x5000 + i);
            QVERIFY(device->sendIOCtrl(wanted.back(), &i, i % 5));
        }
        QVERIFY(!device->sendIOCtrl(1, nullptr, 4) && !device->sendIOCtrl(1, "x", -1));
        QTRY_COMPARE(camera.commands(), wanted);
        QTRY_VERIFY(heard == 1 && device->mode() == 2);
        camera.answer(IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_RESP, QByteArray("\7\0\0", 3));
        QTRY_VERIFY(heard == 2 && device->mode() == 2);
        device->removeListener(&listener);
        camera.answer(IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_RESP, QByteArray("\5\0\0\0\1", 5));
        QTRY_VERIFY(device->mode() == 5 && heard == 2);
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
        QTRY_COMPARE(camera.commands(),
                     std::vector<uint32_t>{IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ});
        device->uninit();
        QTRY_COMPARE(camera.clients(), 0);
        QVERIFY(device->state() == DeviceState::kClosed && lost == 1);
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

    void session_isKeptAlive_alsoBesideACancel() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        const auto device = deviceFor(kUid);
        device->setTiming({20000, 50});
        QCOMPARE(device->init(), 0);
        device->cancelInit();
        QTRY_VERIFY(camera.commands().size() >= 3);
        QCOMPARE(camera.commands()[1], uint32_t(IOTYPE_USER_IPCAM_KEEPALIVE));
        QVERIFY(device->isOnline() && camera.wereLastEightZeros());
    }
};

const orvelle::test::RegisterSuite<DeviceSessionTest> kRegistered;

}  // namespace

#include "device_session_test.moc"
