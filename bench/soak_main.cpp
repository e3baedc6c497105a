#include <QApplication>

#include <cmath>
#include <cstdio>

#include "core/log.h"
#include "device/device.h"
#include "latency_probe.h"
#include "media/live/device_inputs.h"
#include "platform/heap.h"
#include "process_usage.h"
#include "render/drawing.h"
#include "support/leak_check.h"
#include "system/camera_set.h"
#include "ui/preview/device_player_view.h"
#include "watch_grid.h"

namespace orvelle::bench {

using test::CameraSet;
using test::runFor;
using test::waitUntil;

namespace {

constexpr int kOfflineTimeoutMs = 10000;
constexpr int kPictureTimeoutMs = 20000;
constexpr double kSlopeAimMsPerMinute = 1.0;

/// Kills and restarts the camera of a watched tile; the slowest steps are kept.
class RestartCycles {
public:
    explicit RestartCycles(CameraSet& cameras) : m_cameras(cameras) {
        m_tile.resize(640, 480);
        m_tile.show();
        QObject::connect(&m_tile, &KvDevicePlayerView::hideLoadingSignal, &m_tile,
                         [this] { ++m_firstPictures; });
        m_tile.setDevice(m_cameras.devices().front());
    }

    bool run(int cycles) {
        if (!waitForPicture(1))
            return false;
        const double memoryBefore = residentMib();
        for (int cycle = 1; cycle <= cycles; ++cycle) {
            if (!restartCamera(cycle))
                return false;
            if (cycle % 10 == 0)
                std::printf("%d cycles, memory %+.1f MiB, offline <= %.1f s, picture <= %.1f s\n",
                            cycle, residentMib() - memoryBefore, m_slowestOffline,
                            m_slowestPicture);
            std::fflush(stdout);
        }
        return true;
    }

private:
    bool waitForPicture(int count) {
        return waitUntil(kPictureTimeoutMs, [this, count] { return m_firstPictures >= count; });
    }

    bool restartCamera(int cycle) {
        const KvDevice* device = m_cameras.devices().front();
        m_cameras.process().kill();
        const double killed = ProcessUsage::now().wallSeconds;
        if (!waitUntil(kOfflineTimeoutMs, [device] { return !device->isOnline(); })) {
            std::printf("cycle %d: the camera is not seen offline\n", cycle);
            return false;
        }
        m_slowestOffline = std::max(m_slowestOffline, ProcessUsage::now().wallSeconds - killed);
        if (!m_cameras.process().start())
            return false;
        const double started = ProcessUsage::now().wallSeconds;
        if (!waitForPicture(cycle + 1)) {
            std::printf("cycle %d: the picture did not return\n", cycle);
            return false;
        }
        m_slowestPicture = std::max(m_slowestPicture, ProcessUsage::now().wallSeconds - started);
        return true;
    }

    CameraSet& m_cameras;
    KvDevicePlayerView m_tile;
    int m_firstPictures = 0;
    double m_slowestOffline = 0.0;
    double m_slowestPicture = 0.0;
};

QStringList demoArguments() {
    return {QStringLiteral("--demo"), QStringLiteral("--size"), QStringLiteral("720p")};
}

bool restartCycles(int cycles) {
    const test::LeakCheck leaks;
    bool survived = false;
    {
        CameraSet cameras(QStringLiteral("SOAKCYCLES"), 1, demoArguments());
        survived = cameras.connectAll() && RestartCycles(cameras).run(cycles);
    }
    return survived && leaks.leftovers() == 0;
}

bool delayDoesNotGrow(int minutes) {
    CameraSet cameras(QStringLiteral("SOAKDELAY"), 1, demoArguments());
    if (!cameras.connectAll())
        return false;
    WatchGrid grid(cameras.devices(), WatchGrid::Drawing::kOn);
    if (!grid.play(kPictureTimeoutMs))
        return false;
    runFor(5000);
    const LatencyProbe probe(grid.view(0));
    runFor(minutes * 60000);
    const double slope = probe.slopeMsPerMinute();
    std::printf("%d min: median %.1f ms, 99 %% %.1f ms, slope %+.3f ms/min\n", minutes,
                probe.percentileMs(50), probe.percentileMs(99), slope);
    return std::abs(slope) <= kSlopeAimMsPerMinute;
}

}  // namespace

}  // namespace orvelle::bench

/// orvelle-soak [CYCLES [MINUTES]]
int main(int argc, char** argv) {
    orvelle::keepHeapSmall();
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    qputenv("ORVELLE_DISCOVERY_PORT", "47822");
    orvelle::setDebugLines(false);
    orvelle::spareOpenGl();
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int cycles = arguments.value(1, QStringLiteral("100")).toInt();
    const int minutes = arguments.value(2, QStringLiteral("10")).toInt();

    orvelle::registerDeviceInputs();
    const bool survived = cycles == 0 || orvelle::bench::restartCycles(cycles);
    const bool steady = minutes == 0 || orvelle::bench::delayDoesNotGrow(minutes);
    std::printf("restarts: %s, delay: %s\n", survived ? "passed" : "FAILED",
                steady ? "passed" : "FAILED");
    return survived && steady ? 0 : 1;
}
