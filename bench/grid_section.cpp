#include <algorithm>
#include <limits>

#include "grid_window.h"
#include "process_usage.h"
#include "sections.h"
#include "system/camera_set.h"
#include "thread_usage.h"
#include "workbench.h"

namespace orvelle::bench {

namespace {

constexpr int kMeasureMs = 10000;

/// One reading of everything that is measured over a time.
struct Reading {
    ProcessUsage process;
    ThreadUsage threads;
    double cameraCpuSeconds;
    std::vector<uint64_t> shown;
    uint64_t compositions;
};

/// The sizes of one picture in turn, and the least of all tiles' paces.
class GridMeasurement {
public:
    explicit GridMeasurement(Report& report) : m_report(report) {}

    double slowestFps() const { return m_slowestFps; }

    bool run(const char* size, const QStringList& source, const QString& aim) {
        test::CameraSet cameras(QStringLiteral("BENCHGRID"), kGridCameras, source,
                                test::CameraSet::Processes::kEach);
        if (!cameras.connectAll())
            return false;
        GridWindow grid(cameras.devices());
        if (!grid.play(kPlayTimeoutMs))
            return false;
        const QString name = QStringLiteral("16x") + QLatin1String(size);
        measure(name, cameras, grid, aim);
        if (grid.maximise())
            measure(name + QStringLiteral("_maximised"), cameras, grid, {});
        return true;
    }

private:
    static Reading read(test::CameraSet& cameras, const GridWindow& grid) {
        return {ProcessUsage::now(), ThreadUsage::now(), cameras.cpuSeconds(), grid.picturesShown(),
                grid.compositions()};
    }

    void measure(const QString& name, test::CameraSet& cameras, const GridWindow& grid,
                 const QString& aim) {
        test::runFor(kBarsGoneMs);
        const Reading before = read(cameras, grid);
        test::runFor(kMeasureMs);
        const Reading after = read(cameras, grid);
        add("grid_cpu_", name, "_pct", cpuPercent(before.process, after.process), aim);
        const CpuSplit split = cpuSplit(before.threads, after.threads);
        for (size_t i = 0; i < split.size(); ++i)
            add("grid_cpu_",
                name + QLatin1Char('_') + QLatin1String(workName(static_cast<Work>(i))), "_pct",
                split[i]);
        const double seconds = after.process.wallSeconds - before.process.wallSeconds;
        add("grid_cameras_cpu_", name, "_pct",
            100.0 * (after.cameraCpuSeconds - before.cameraCpuSeconds) / seconds);
        add("grid_compositions_", name, "_per_s",
            static_cast<double>(after.compositions - before.compositions) / seconds);
        add("grid_rss_", name, "_mib", residentMib());
        reportFps(name, before.shown, after.shown, seconds);
    }

    void reportFps(const QString& name, const std::vector<uint64_t>& before,
                   const std::vector<uint64_t>& after, double seconds) {
        std::vector<double> fps;
        for (size_t i = 0; i < after.size(); ++i)
            fps.push_back(static_cast<double>(after[i] - before[i]) / seconds);
        const auto [least, most] = std::minmax_element(fps.begin(), fps.end());
        add("grid_fps_", name, "_min", *least);
        add("grid_fps_", name, "_max", *most);
        m_slowestFps = std::min(m_slowestFps, *least);
    }

    void add(const char* prefix, const QString& name, const char* suffix, double value,
             const QString& aim = {}) {
        m_report.add(QLatin1String(prefix) + name + QLatin1String(suffix), value, aim);
    }

    Report& m_report;
    double m_slowestFps = std::numeric_limits<double>::infinity();
};

}  // namespace

bool measureGrid(Workbench& bench) {
    GridMeasurement measurement(bench.report());
    if (!measurement.run("360p", bench.clipSource("360p"), QStringLiteral("<= 100")) ||
        !measurement.run("720p", bench.clipSource("720p"), QStringLiteral("<= 140")))
        return false;
    bench.report().add(QStringLiteral("grid_fps_min"), measurement.slowestFps(),
                       QStringLiteral(">= 14.7"));
    return true;
}

}  // namespace orvelle::bench
