#include "latency_probe.h"
#include "sections.h"
#include "system/camera_set.h"
#include "watch_grid.h"
#include "workbench.h"

namespace orvelle::bench {

namespace {

constexpr int kLatencyMs = 50000;

}  // namespace

bool measureLatency(Workbench& bench) {
    test::CameraSet cameras(
        QStringLiteral("BENCHDEMO"), 1,
        {QStringLiteral("--demo"), QStringLiteral("--size"), QStringLiteral("720p")});
    if (!cameras.connectAll())
        return false;
    WatchGrid grid(cameras.devices(), WatchGrid::Drawing::kOn);
    if (!grid.play(kPlayTimeoutMs))
        return false;
    Report& report = bench.report();
    report.add(QStringLiteral("first_picture_ms"), grid.firstPictureMs(), QStringLiteral("< 1000"));
    test::runFor(kSettleMs);
    const LatencyProbe probe(grid.view(0));
    test::runFor(kLatencyMs);
    report.add(QStringLiteral("latency_samples"), static_cast<double>(probe.samples().size()));
    report.add(QStringLiteral("latency_p50_ms"), probe.percentileMs(50), QStringLiteral("<= 45"));
    report.add(QStringLiteral("latency_p99_ms"), probe.percentileMs(99), QStringLiteral("<= 100"));
    return !probe.samples().empty();
}

}  // namespace orvelle::bench
