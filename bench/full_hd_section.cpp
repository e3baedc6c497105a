#include <QElapsedTimer>

#include "grid_window.h"
#include "median.h"
#include "sections.h"
#include "system/camera_set.h"
#include "ui/preview/device_player_view.h"
#include "watch_grid.h"
#include "workbench.h"

namespace orvelle::bench {

using test::CameraSet;
using test::runFor;

namespace {

constexpr int kMeasureMs = 8000;
constexpr int kSnapshots = 9;

bool measureBareView(const CameraSet& cameras, Report& report) {
    WatchGrid grid(cameras.devices(), WatchGrid::Drawing::kOn);
    if (!grid.play(kPlayTimeoutMs))
        return false;
    runFor(kSettleMs);
    report.add(QStringLiteral("cpu_1x1080p_pct"), Workbench::cpuPercentFor(kMeasureMs),
               QStringLiteral("<= 15"));
    return true;
}

bool measureSnapshots(KvDevicePlayerView& tile, Report& report) {
    std::vector<double> times;
    for (int i = 0; i < kSnapshots; ++i) {
        QElapsedTimer timer;
        timer.start();
        if (tile.capture(QStringLiteral("bench%1").arg(i)).isEmpty())
            return false;
        times.push_back(static_cast<double>(timer.nsecsElapsed()) * 1e-6);
        runFor(100);
    }
    report.add(QStringLiteral("snapshot_1080p_ms"), median(std::move(times)));
    return true;
}

}  // namespace

bool measureFullHd(Workbench& bench) {
    CameraSet cameras(QStringLiteral("BENCHFULLHD"), 1, bench.clipSource("1080p"));
    if (!cameras.connectAll() || !measureBareView(cameras, bench.report()))
        return false;
    GridWindow grid(cameras.devices());
    if (!grid.play(kPlayTimeoutMs))
        return false;
    runFor(kBarsGoneMs);
    bench.report().add(QStringLiteral("grid_cpu_1x1080p_pct"), Workbench::cpuPercentFor(kMeasureMs),
                       QStringLiteral("<= 15"));
    return measureSnapshots(*grid.tiles().front(), bench.report());
}

}  // namespace orvelle::bench
