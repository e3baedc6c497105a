#pragma once

#include <cstdint>

namespace orvelle::bench {

/// What this process has used since it started.
struct ProcessUsage {
    double wallSeconds = 0.0;  ///< monotonic clock
    double cpuSeconds = 0.0;   ///< user and system, all threads
    int64_t wakeups = 0;       ///< voluntary context switches of all living threads

    static ProcessUsage now();
};

/// CPU between two readings, in percent of one core.
double cpuPercent(const ProcessUsage& from, const ProcessUsage& to);

double wakeupsPerSecond(const ProcessUsage& from, const ProcessUsage& to);

/// Resident memory now, in MiB.
double residentMib();

/// Of another process: CPU seconds so far, 0 when there is none, and resident memory in MiB.
double cpuSecondsOf(int64_t processId);
double residentMibOf(int64_t processId);

}  // namespace orvelle::bench
