#include "process_usage.h"

#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace orvelle::bench {

namespace {

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

int64_t voluntarySwitches() {
    int64_t sum = 0;
    std::error_code gone;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", gone)) {
        std::ifstream status(task.path() / "status");
        const std::string key = "voluntary_ctxt_switches:";
        for (std::string line; std::getline(status, line);)
            if (line.compare(0, key.size(), key) == 0)
                sum += std::stoll(line.substr(key.size()));
    }
    return sum;
}

}  // namespace

ProcessUsage ProcessUsage::now() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto wall = std::chrono::steady_clock::now().time_since_epoch();
    return {std::chrono::duration<double>(wall).count(),
            seconds(usage.ru_utime) + seconds(usage.ru_stime), voluntarySwitches()};
}

double cpuPercent(const ProcessUsage& from, const ProcessUsage& to) {
    return 100.0 * (to.cpuSeconds - from.cpuSeconds) / (to.wallSeconds - from.wallSeconds);
}

double wakeupsPerSecond(const ProcessUsage& from, const ProcessUsage& to) {
    return static_cast<double>(to.wakeups - from.wakeups) / (to.wallSeconds - from.wallSeconds);
}

double residentMib() {
    return residentMibOf(getpid());
}

double cpuSecondsOf(int64_t processId) {
    std::ifstream file("/proc/" + std::to_string(processId) + "/stat");
    std::string stat;
    std::getline(file, stat);
    // Fields 14 and 15, counted from behind the name, which may hold blanks.
    std::istringstream fields(stat.substr(stat.rfind(')') + 1));
    std::string skipped;
    for (int field = 3; field < 14; ++field)
        fields >> skipped;
    double user = 0.0;
    double system = 0.0;
    fields >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double residentMibOf(int64_t processId) {
    std::ifstream statm("/proc/" + std::to_string(processId) + "/statm");
    int64_t total = 0;
    int64_t resident = 0;
    statm >> total >> resident;
    return static_cast<double>(resident * sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

}  // namespace orvelle::bench
