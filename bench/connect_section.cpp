#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QThread>

#include "device/tutk_device.h"
#include "sections.h"
#include "support/camera_process.h"
#include "workbench.h"

namespace orvelle::bench {

using test::CameraProcess;

namespace {

constexpr int kCamerasOff = 31;
constexpr int kConnectTimeoutMs = 60'000;
constexpr int kEndTimeoutMs = 10'000;
/// As long as a small camera takes to boot; several searches go by in vain.
constexpr int kAwayMs = 10'000;
constexpr char kUid[] = "BENCHCONNECT";

bool writeDevices(const QString& directory) {
    QStringList uids{QLatin1String(kUid)};
    for (int i = 0; i < kCamerasOff; ++i)
        uids << QStringLiteral("BENCHAWAY%1").arg(i);
    bool isWritten = QDir().mkpath(directory);
    for (const QString& uid : qAsConst(uids)) {
        KvTUTKDevice device;
        device.setUid(uid);
        device.setPassword(QLatin1String(CameraProcess::kPassword));
        isWritten = isWritten &&
                    device.writeToFile(directory + QLatin1Char('/') + uid + QStringLiteral(".xml"));
    }
    return isWritten;
}

void startClient(QProcess& client, const QString& dataHome) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), dataHome);
    client.setProcessEnvironment(environment);
    client.setStandardOutputFile(QProcess::nullDevice());
    client.setStandardErrorFile(QProcess::nullDevice());
    client.start(Workbench::program("orvelle"), QStringList());
}

/// From `timer`'s start until the camera has its client.
bool report(const char* key, const QElapsedTimer& timer, CameraProcess& camera, Report& report) {
    if (!camera.waitForLine(" connected", kConnectTimeoutMs))
        return false;
    report.add(QLatin1String(key), static_cast<double>(timer.elapsed()), QStringLiteral("< 3000"));
    return true;
}

bool measureRestart(const char* key, int awayMs, CameraProcess& camera, Report& figures) {
    // The client may still be busy with the end of its login.
    QThread::msleep(kSettleMs);
    if (camera.terminate() != 0)
        return false;
    QThread::msleep(static_cast<unsigned long>(awayMs));
    QElapsedTimer timer;
    timer.start();
    return camera.start() && report(key, timer, camera, figures);
}

}  // namespace

bool measureConnecting(Workbench& bench) {
    CameraProcess camera(bench.clipSource("360p")
                         << QStringLiteral("--uid") << QLatin1String(kUid));
    const QString data = bench.path("connect");
    if (!writeDevices(data + QStringLiteral("/Orvelle/Devices/KvTUTK")) || !camera.start())
        return false;
    QProcess client;
    QElapsedTimer timer;
    timer.start();
    startClient(client, data);
    const bool isMeasured =
        report("connect_behind_31_ms", timer, camera, bench.report()) &&
        measureRestart("connect_behind_31_restart_ms", 0, camera, bench.report()) &&
        measureRestart("connect_behind_31_return_ms", kAwayMs, camera, bench.report());
    client.terminate();
    return client.waitForFinished(kEndTimeoutMs) && isMeasured;
}

}  // namespace orvelle::bench
