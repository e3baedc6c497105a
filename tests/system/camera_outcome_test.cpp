#include "device/tutk_device.h"
#include "link/av.h"
#include "link/client/link_client.h"
#include "link/iotc.h"
#include "link/result_codes.h"
#include "support/camera_process.h"
#include "support/suites.h"

#include <QtTest>

using orvelle::DeviceState;
using orvelle::test::CameraProcess;

namespace {

/// What a user can tell about a camera that does not connect.
class CameraOutcomeTest : public QObject {
    Q_OBJECT
private slots:
    void state_tellsWhy_whenCameraDoesNotConnect_data();
    void state_tellsWhy_whenCameraDoesNotConnect();
};

}  // namespace

void CameraOutcomeTest::state_tellsWhy_whenCameraDoesNotConnect_data() {
    QTest::addColumn<bool>("cameraRuns");
    QTest::addColumn<QString>("password");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("state");
    const QString right = QLatin1String(CameraProcess::kPassword);
    QTest::newRow("right password") << true << right << 0 << static_cast<int>(DeviceState::kOnline);
    QTest::newRow("wrong password")
        << true << QStringLiteral("guess") << -1 << static_cast<int>(DeviceState::kWrongPassword);
    QTest::newRow("camera is off")
        << false << right << -1 << static_cast<int>(DeviceState::kUnreachable);
}

void CameraOutcomeTest::state_tellsWhy_whenCameraDoesNotConnect() {
    QFETCH(bool, cameraRuns);
    QFETCH(QString, password);
    QFETCH(int, state);
    CameraProcess camera(
        {QStringLiteral("--demo"), QStringLiteral("--uid"), QStringLiteral("OUTCOME1")});
    if (cameraRuns)
        QVERIFY(camera.start());
    QCOMPARE(IOTC_Initialize2(0), 0);
    QVERIFY(avInitialize(1) > 0);
    KvTUTKDevice device;
    device.setUid(QStringLiteral("OUTCOME1"));
    device.setPassword(password);
    QTEST(device.init(), "result");
    QCOMPARE(static_cast<int>(device.state()), state);
    QCOMPARE(device.isOnline(), state == static_cast<int>(DeviceState::kOnline));
    if (device.state() == DeviceState::kWrongPassword)
        QCOMPARE(device.lastResult(), static_cast<int>(AV_ER_WRONG_VIEWACCorPWD));
    device.uninit();
    orvelle::LinkClient::instance().shutDown();
    if (cameraRuns)
        QCOMPARE(camera.terminate(), 0);
}

static orvelle::test::RegisterSuite<CameraOutcomeTest> s_suite;

#include "camera_outcome_test.moc"
