#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "client_program.h"
#include "device/device_group.h"
#include "device/tutk_device.h"
#include "process_usage.h"
#include "sections.h"
#include "support/camera_process.h"
#include "system/camera_set.h"
#include "ui/preview/grid_layout.h"
#include "workbench.h"

namespace orvelle::bench {

using test::CameraProcess;
using test::runFor;

namespace {

constexpr int kMeasureMs = 8000;
/// Until all play and the bars of the client's tiles are gone.
constexpr int kPlayersMs = 6000;
constexpr int kClientMs = 9000;
constexpr int kColumns = 4;

/// The same pictures in the client and in as many players, each as large as a tile's picture.
struct Scene {
    const char* size;
    int count;
    QSize picture;

    QString name() const { return QStringLiteral("%1x%2").arg(count).arg(QLatin1String(size)); }
};
constexpr Scene kScenes[] = {
    {"360p", kGridCameras, {206, 116}},
    {"720p", kGridCameras, {206, 116}},
    {"1080p", 1, {825, 464}},
};

double cpuPercentOf(const std::vector<qint64>& processes) {
    const auto seconds = [&processes] {
        double sum = 0.0;
        for (const qint64 id : processes)
            sum += cpuSecondsOf(id);
        return sum;
    };
    const ProcessUsage from = ProcessUsage::now();
    const double before = seconds();
    runFor(kMeasureMs);
    const double used = seconds() - before;
    return 100.0 * used / (ProcessUsage::now().wallSeconds - from.wallSeconds);
}

/// CPU of players with this kind of output, in percent of a core; negative when one ended.
double measurePlayers(const Scene& scene, const QString& clip, const QString& output) {
    std::vector<std::unique_ptr<QProcess>> players;
    std::vector<qint64> ids;
    for (int i = 0; i < scene.count; ++i) {
        players.push_back(std::make_unique<QProcess>());
        const QString size =
            QStringLiteral("%1x%2").arg(scene.picture.width()).arg(scene.picture.height());
        const QString place = QStringLiteral("+%1+%2")
                                  .arg(i % kColumns * scene.picture.width())
                                  .arg(i / kColumns * scene.picture.height());
        // As cheap as it gets: one decoding thread, no sound, software OpenGL accepted.
        players.back()->start(
            QStringLiteral("mpv"),
            {QStringLiteral("--no-config"), QStringLiteral("--no-terminal"),
             QStringLiteral("--loop-file=inf"), QStringLiteral("--no-audio"),
             QStringLiteral("--osc=no"), QStringLiteral("--hwdec=no"),
             QStringLiteral("--vd-lavc-threads=1"), QStringLiteral("--gpu-sw=yes"),
             QStringLiteral("--no-border"), QStringLiteral("--vo=") + output,
             QStringLiteral("--autofit=") + size, QStringLiteral("--geometry=") + size + place,
             clip});
        if (!players.back()->waitForStarted())
            return -1.0;
        ids.push_back(players.back()->processId());
    }
    runFor(kPlayersMs);
    const double used = cpuPercentOf(ids);
    bool allPlayed = true;
    for (const auto& player : players) {
        allPlayed = allPlayed && player->state() == QProcess::Running;
        player->kill();
        player->waitForFinished();
    }
    return allPlayed ? used : -1.0;
}

/// Cameras, and a client's data directory that knows them, several as one group.
class ClientScene {
public:
    ClientScene(const Scene& scene, Workbench& bench)
        : m_data(bench.path("peers-") + scene.name()) {
        const QByteArray ownData = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_data));
        QList<KvDevice*> devices;
        for (int i = 0; i < scene.count; ++i) {
            const QString uid = QStringLiteral("PEERS%1X%2")
                                    .arg(scene.name().toUpper())
                                    .arg(i, 2, 10, QLatin1Char('0'));
            m_cameras.push_back(std::make_unique<CameraProcess>(bench.clipSource(scene.size)
                                                                << QStringLiteral("--uid") << uid));
            auto device = std::make_unique<KvTUTKDevice>();
            device->setUid(uid);
            device->setPassword(QLatin1String(CameraProcess::kPassword));
            device->setVolume(0.0);  // the players are silent, too
            m_isWritten = device->save() && m_isWritten;
            devices << device.get();
            m_devices.push_back(std::move(device));
        }
        if (scene.count > 1)
            writeGroup(devices);
        qputenv("XDG_DATA_HOME", ownData);
    }

    bool start() {
        return m_isWritten && std::all_of(m_cameras.begin(), m_cameras.end(),
                                          [](const auto& camera) { return camera->start(); });
    }
    const QString& data() const { return m_data; }

private:
    void writeGroup(const QList<KvDevice*>& devices) {
        KvDeviceGroup group;
        group.setType(KvDeviceGroup::kGroup);
        group.setName(QStringLiteral("Peers"));
        group.setLayout(kGrid4x4);
        group.setGroupIndex(0);
        group.setDevices(devices);
        m_isWritten = group.save() && m_isWritten;
    }

    const QString m_data;
    bool m_isWritten = true;
    std::vector<std::unique_ptr<CameraProcess>> m_cameras;
    std::vector<std::unique_ptr<KvTUTKDevice>> m_devices;
};

/// CPU of the client in percent of a core; negative when it could not be had.
double measureClient(const Scene& scene, Workbench& bench) {
    ClientScene cameras(scene, bench);
    if (!cameras.start())
        return -1.0;
    ClientProgram client(cameras.data());
    client.start();
    if (client.waitUntilSeen() < 0.0 || !client.openFirstEntry())
        return -1.0;
    runFor(kClientMs);
    const double used = cpuPercentOf({client.processId()});
    bench.report().add(QStringLiteral("peer_client_%1_rss_mib").arg(scene.name()),
                       residentMibOf(client.processId()));
    return used;
}

}  // namespace

bool measurePeers(Workbench& bench) {
    if (QStandardPaths::findExecutable(QStringLiteral("mpv")).isEmpty())
        return false;
    Report& report = bench.report();
    for (const Scene& scene : kScenes) {
        const QString clip = bench.clip(scene.size);
        const double x11 = measurePlayers(scene, clip, QStringLiteral("x11"));
        const double client = measureClient(scene, bench);
        const double gpu = measurePlayers(scene, clip, QStringLiteral("gpu"));
        if (x11 < 0.0 || client < 0.0 || gpu < 0.0) {
            std::fprintf(stderr, "peers: no figures for %s of %s\n",
                         client < 0.0 ? "the client" : "mpv", qPrintable(scene.name()));
            return false;
        }
        report.add(QStringLiteral("peer_client_%1_pct").arg(scene.name()), client);
        report.add(QStringLiteral("peer_mpv_x11_%1_pct").arg(scene.name()), x11);
        report.add(QStringLiteral("peer_mpv_gpu_%1_pct").arg(scene.name()), gpu);
        report.add(QStringLiteral("peer_ratio_%1").arg(scene.name()), client / std::min(x11, gpu),
                   QStringLiteral("<= 1.0"));
    }
    return true;
}

}  // namespace orvelle::bench
