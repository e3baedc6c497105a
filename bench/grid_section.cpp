#include <algorithm>
#include <limits>

#include "grid_reading.h"
#include "grid_window.h"
#include "sections.h"
#include "system/camera_set.h"
#include "workbench.h"

namespace orvelle::bench {

namespace {

constexpr int kMeasureMs = 8000;

/// The sizes of one picture in turn, and the least of all tiles' paces.
class GridMeasurement {
public:
    explicit GridMeasurement(Report& report) : m_report(report) {}

    double slowestFps() const { return m_slowestFps; }

    bool run(const char* size, const QStringList& source, int mostPct) {
        test::CameraSet cameras(QStringLiteral("BENCHGRID"), kGridCameras, source,
                                test::CameraSet::Processes::kEach);
        if (!cameras.connectAll())
            return false;
        GridWindow grid(cameras.devices());
        if (!grid.play(kPlayTimeoutMs))
            return false;
        const QString name = QStringLiteral("16x") + QLatin1String(size);
        measure(name, cameras, grid, mostPct);
        if (grid.maximise())
            measure(name + QStringLiteral("_maximised"), cameras, grid, mostPct * 3 / 2);
        return true;
    }

private:
    void measure(const QString& name, const test::CameraSet& cameras, const GridWindow& grid,
                 int mostPct) {
        test::runFor(kBarsGoneMs);
        const GridUsage usage = GridUsage::over(kMeasureMs, cameras, grid);
        m_report.add(QStringLiteral("grid_cpu_%1_pct").arg(name), usage.cpuPct(),
                     QStringLiteral("<= %1").arg(mostPct));
        usage.addDetails(QStringLiteral("grid_") + name, m_report);
        m_report.add(QStringLiteral("grid_%1_rss_mib").arg(name), residentMib());
        const std::vector<double> fps = usage.fps();
        const auto [least, most] = std::minmax_element(fps.begin(), fps.end());
        m_report.add(QStringLiteral("grid_%1_fps_min").arg(name), *least);
        m_report.add(QStringLiteral("grid_%1_fps_max").arg(name), *most);
        m_slowestFps = std::min(m_slowestFps, *least);
    }

    Report& m_report;
    double m_slowestFps = std::numeric_limits<double>::infinity();
};

}  // namespace

bool measureGrid(Workbench& bench) {
    GridMeasurement measurement(bench.report());
    if (!measurement.run("360p", bench.clipSource("360p"), 40) ||
        !measurement.run("720p", bench.clipSource("720p"), 75))
        return false;
    bench.report().add(QStringLiteral("grid_fps_min"), measurement.slowestFps(),
                       QStringLiteral(">= 14.7"));
    return true;
}

}  // namespace orvelle::bench
