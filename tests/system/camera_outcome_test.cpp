#include "system/camera_outcome_test.h"

#include <QtTest>

#include "device/tutk_device.h"
#include "link/iotc.h"
#include "link/result_codes.h"
#include "support/camera_process.h"

using orvelle::DeviceState;
using orvelle::test::CameraProcess;

void CameraOutcomeTest::state_tellsWhy_whenCameraDoesNotConnect_data() {
    QTest::addColumn<bool>("cameraRuns");
    QTest::addColumn<QString>("password");
    QTest::addColumn<int>("result");
    QTest::addColumn<DeviceState>("state");
    const QString right = QLatin1String(CameraProcess::kPassword);
    QTest::newRow("right password") << true << right << 0 << DeviceState::kOnline;
    QTest::newRow("wrong password")
        << true << QStringLiteral("guess") << -1 << DeviceState::kWrongPassword;
    QTest::newRow("camera is off") << false << right << -1 << DeviceState::kUnreachable;
}

void CameraOutcomeTest::state_tellsWhy_whenCameraDoesNotConnect() {
    QFETCH(bool, cameraRuns);
    QFETCH(QString, password);
    QFETCH(DeviceState, state);
    CameraProcess camera(
        {QStringLiteral("--demo"), QStringLiteral("--uid"), QStringLiteral("OUTCOME1")});
    if (cameraRuns)
        QVERIFY(camera.start());
    IOTC_Initialize2(0);
    KvTUTKDevice device;
    device.setUid(QStringLiteral("OUTCOME1"));
    device.setPassword(password);
    QTEST(device.init(), "result");
    QCOMPARE(device.state(), state);
    QCOMPARE(device.isOnline(), state == DeviceState::kOnline);
    if (state == DeviceState::kWrongPassword)
        QCOMPARE(device.lastResult(), static_cast<int>(AV_ER_WRONG_VIEWACCorPWD));
    device.uninit();
    if (cameraRuns)
        QCOMPARE(camera.terminate(), 0);
}
