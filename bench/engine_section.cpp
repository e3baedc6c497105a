#include <future>

#include "plain_decoding.h"
#include "process_usage.h"
#include "sections.h"
#include "system/camera_set.h"
#include "watch_grid.h"
#include "workbench.h"

namespace orvelle::bench {

using test::CameraSet;
using test::runFor;

namespace {

constexpr int kIdleMs = 8000;
constexpr int kMeasureMs = 8000;

bool measureIdle(Report& report) {
    runFor(kSettleMs);
    const ProcessUsage before = ProcessUsage::now();
    runFor(kIdleMs);
    const ProcessUsage after = ProcessUsage::now();
    report.add(QStringLiteral("idle_16_connected_cpu_pct"), cpuPercent(before, after),
               QStringLiteral("<= 1"));
    report.add(QStringLiteral("idle_wakeups_per_s"), wakeupsPerSecond(before, after));
    return true;
}

bool measureUndrawn(const CameraSet& cameras, const QString& clip, Report& report) {
    WatchGrid grid(cameras.devices(), WatchGrid::Drawing::kOff);
    if (!grid.play(kPlayTimeoutMs))
        return false;
    runFor(kSettleMs);
    // At the same time: what a core gets done changes from second to second on shared machines.
    auto decoding = std::async(std::launch::async, plainDecodingCpuPercent, clip, kGridCameras,
                               kMeasureMs / 1000);
    const double both = Workbench::cpuPercentFor(kMeasureMs);
    const double plain = decoding.get();
    const double client = both - plain;
    report.add(QStringLiteral("cpu_16x360p_nodraw_pct"), client);
    report.add(QStringLiteral("cpu_16x360p_plain_decoding_pct"), plain);
    report.add(QStringLiteral("cpu_16x360p_nodraw_ratio"), client / plain,
               QStringLiteral("<= 1.3"));
    return plain > 0.0;
}

bool measureBareViews(const CameraSet& cameras, Report& report) {
    WatchGrid grid(cameras.devices(), WatchGrid::Drawing::kOn);
    if (!grid.play(kPlayTimeoutMs))
        return false;
    runFor(kSettleMs);
    const uint64_t lostBefore = grid.picturesLost();
    report.add(QStringLiteral("cpu_16x360p_pct"), Workbench::cpuPercentFor(kMeasureMs),
               QStringLiteral("<= 40"));
    report.add(QStringLiteral("dropped_frames_16x360p"),
               static_cast<double>(grid.picturesLost() - lostBefore), QStringLiteral("0"));
    report.add(QStringLiteral("rss_16x360p_mib"), residentMib(), QStringLiteral("<= 200"));
    return true;
}

}  // namespace

bool measureEngine(Workbench& bench) {
    CameraSet cameras(QStringLiteral("BENCHENGINE"), kGridCameras, bench.clipSource("360p"),
                      CameraSet::Processes::kEach);
    return cameras.connectAll() && measureIdle(bench.report()) &&
           measureUndrawn(cameras, bench.clip("360p"), bench.report()) &&
           measureBareViews(cameras, bench.report());
}

}  // namespace orvelle::bench
