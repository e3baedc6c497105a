#pragma once

#include <QString>

#include <cstdint>
#include <vector>

#include "process_usage.h"
#include "thread_usage.h"

namespace orvelle::test {
class CameraSet;
}

namespace orvelle::bench {

class GridWindow;
class Report;

/// What has been used and shown up to one moment.
struct GridReading {
    ProcessUsage process;
    ThreadUsage threads;
    double camerasCpuSeconds;     ///< of the cameras' own processes
    std::vector<uint64_t> shown;  ///< pictures, by tile
    uint64_t compositions;        ///< of the window

    static GridReading now(const test::CameraSet& cameras, const GridWindow& grid);
};

/// What happened between two readings.
class GridUsage {
public:
    /// Runs the event loop for `ms`.
    static GridUsage over(int ms, const test::CameraSet& cameras, const GridWindow& grid);

    double cpuPct() const { return cpuPercent(m_from.process, m_to.process); }
    /// Pictures a second, by tile.
    std::vector<double> fps() const;
    /// Adds "PREFIX_link_pct" and so on, and "PREFIX_compositions_per_s".
    void addDetails(const QString& prefix, Report& report) const;

private:
    double seconds() const { return m_to.process.wallSeconds - m_from.process.wallSeconds; }

    GridReading m_from;
    GridReading m_to;
};

}  // namespace orvelle::bench
