#include <QDir>
#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>

#include "device/tutk_device.h"
#include "link/av.h"
#include "link/iotc.h"
#include "link/limits.h"
#include "media/card/card_download.h"
#include "sections.h"
#include "support/camera_process.h"
#include "support/udp_relay.h"
#include "system/camera_set.h"
#include "workbench.h"

namespace orvelle::bench {

using test::waitUntil;

namespace {

constexpr char kUid[] = "BENCHDOWNLOAD";
constexpr int64_t kPathBitsPerSecond = 4'000'000;
constexpr int kConnectTimeoutMs = 20'000;
/// Left out, as the camera first has to find out what the path takes.
constexpr int kWarmUpMs = 5'000;
constexpr int kMeasuredMs = 15'000;
constexpr int kMinuteSec = 60;

/// All that is on the card, run by run.
std::vector<CardDownload::Stretch> stretchesOf(const QString& card) {
    std::vector<CardDownload::Stretch> stretches;
    const QStringList names =
        QDir(card).entryList({QStringLiteral("*.mkv")}, QDir::Files, QDir::Name);
    for (const QString& name : names) {
        QDateTime start = QDateTime::fromString(name, QStringLiteral("yyyyMMdd'T'HHmmss'Z.mkv'"));
        start.setTimeSpec(Qt::UTC);
        const int64_t sec = start.toSecsSinceEpoch();
        if (stretches.empty() || stretches.back().toSec != sec)
            stretches.push_back({sec, sec, sec});
        stretches.back().toSec = sec + kMinuteSec;
    }
    return stretches;
}

}  // namespace

bool measureDownload(Workbench& bench) {
    const QString card = bench.path("download-card");
    if (QProcess::execute(
            Workbench::program("orvelle-camera"),
            {QStringLiteral("--make-card"), card, QStringLiteral("--days"), QStringLiteral("1"),
             QStringLiteral("--bitrate"), QStringLiteral("2000000")}) != 0)
        return false;
    const std::vector<CardDownload::Stretch> stretches = stretchesOf(card);
    const uint16_t port = 40000 + static_cast<uint16_t>(QCoreApplication::applicationPid() % 20000);
    test::CameraProcess camera({QStringLiteral("--uid"), QLatin1String(kUid),
                                QStringLiteral("--demo"), QStringLiteral("--size"),
                                QStringLiteral("360p"), QStringLiteral("--port"),
                                QString::number(port), QStringLiteral("--sd"), card});
    UdpRelay relay(port);
    RelayPath path;
    path.delayMs = 10;
    path.bitsPerSecond = kPathBitsPerSecond;
    relay.setBothPaths(path);
    if (!camera.start())
        return false;
    // Or the client would find the way past the relay.
    qputenv("ORVELLE_DISCOVERY_PORT", "47833");
    qputenv("ORVELLE_CAMERA_ADDRESSES",
            QByteArray(kUid) + "=127.0.0.1:" + QByteArray::number(relay.port()));
    IOTC_Initialize2(0);
    avInitialize(kMaxLinkChannels);
    KvTUTKDevice device;
    device.setUid(QLatin1String(kUid));
    device.setPassword(QLatin1String(test::CameraProcess::kPassword));
    if (!waitUntil(kConnectTimeoutMs, [&device] { return device.init() == 0; }))
        return false;
    CardDownload download(&device, stretches, bench.path("download.mp4"));
    download.start();
    test::runFor(kWarmUpMs);
    const uint64_t before = download.receivedBytes();
    QElapsedTimer timer;
    timer.start();
    waitUntil(kMeasuredMs, [&download] { return download.isOver(); });
    const double seconds = static_cast<double>(timer.elapsed()) / 1000.0;
    const double bits = static_cast<double>(download.receivedBytes() - before) * 8.0;
    const bool isGood = !download.isOver() || download.state() == CardDownload::State::kDone;
    download.stop();
    download.waitForEnd();
    device.uninit();
    bench.report().add(QStringLiteral("card_download_ratio"),
                       bits / seconds / static_cast<double>(kPathBitsPerSecond),
                       QStringLiteral(">= 0.9"));
    return isGood && seconds > 1.0;
}

}  // namespace orvelle::bench
