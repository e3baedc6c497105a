#include "grid_reading.h"

#include "grid_window.h"
#include "report.h"
#include "system/camera_set.h"

namespace orvelle::bench {

GridReading GridReading::now(const test::CameraSet& cameras, const GridWindow& grid) {
    return {ProcessUsage::now(), ThreadUsage::now(), cameras.cpuSeconds(), grid.picturesShown(),
            grid.compositions()};
}

GridUsage GridUsage::over(int ms, const test::CameraSet& cameras, const GridWindow& grid) {
    GridUsage usage;
    usage.m_from = GridReading::now(cameras, grid);
    test::runFor(ms);
    usage.m_to = GridReading::now(cameras, grid);
    return usage;
}

std::vector<double> GridUsage::fps() const {
    std::vector<double> fps;
    for (size_t i = 0; i < m_to.shown.size(); ++i)
        fps.push_back(static_cast<double>(m_to.shown[i] - m_from.shown[i]) / seconds());
    return fps;
}

void GridUsage::addDetails(const QString& prefix, Report& report) const {
    const CpuSplit split = cpuSplit(m_from.threads, m_to.threads);
    for (size_t i = 0; i < split.size(); ++i)
        report.add(
            QStringLiteral("%1_%2_pct").arg(prefix, QLatin1String(workName(static_cast<Work>(i)))),
            split[i]);
    report.add(prefix + QStringLiteral("_cameras_pct"),
               100.0 * (m_to.camerasCpuSeconds - m_from.camerasCpuSeconds) / seconds());
    report.add(prefix + QStringLiteral("_compositions_per_s"),
               static_cast<double>(m_to.compositions - m_from.compositions) / seconds());
}

}  // namespace orvelle::bench
