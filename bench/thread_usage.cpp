#include "thread_usage.h"

#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace orvelle::bench {

namespace {

struct NamedWork {
    const char* prefix;
    Work work;
};
constexpr NamedWork kWorks[] = {
    {"link-client", Work::kLink},  {"SRT:", Work::kLink},          {"recv-", Work::kLink},
    {"device-", Work::kLink},      {"decode-", Work::kDecoding},   {"show-video", Work::kCopying},
    {"llvmpipe-", Work::kDrawing}, {"recorder", Work::kRecording},
};

Work workOf(int id, const std::string& name) {
    if (id == getpid())
        return Work::kInterface;
    for (const NamedWork& known : kWorks)
        if (name.compare(0, std::strlen(known.prefix), known.prefix) == 0)
            return known.work;
    return Work::kOther;
}

/// Of the text of a thread's stat file: "ID (NAME) STATE ...", where the name may hold anything.
ThreadUsage::Thread parse(int id, const std::string& stat) {
    const size_t open = stat.find('(');
    const size_t close = stat.rfind(')');
    if (open == std::string::npos || close == std::string::npos)
        return {};
    std::istringstream fields(stat.substr(close + 1));
    std::string skipped;
    for (int field = 3; field < 14; ++field)
        fields >> skipped;
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return {workOf(id, stat.substr(open + 1, close - open - 1)),
            static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK))};
}

}  // namespace

ThreadUsage ThreadUsage::now() {
    ThreadUsage usage;
    const auto wall = std::chrono::steady_clock::now().time_since_epoch();
    usage.wallSeconds = std::chrono::duration<double>(wall).count();
    std::error_code gone;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", gone)) {
        std::ifstream file(task.path() / "stat");
        std::string stat;
        if (std::getline(file, stat)) {
            const int id = std::stoi(task.path().filename());
            usage.threads[id] = parse(id, stat);
        }
    }
    return usage;
}

CpuSplit cpuSplit(const ThreadUsage& from, const ThreadUsage& to) {
    CpuSplit split{};
    for (const auto& [id, thread] : to.threads) {
        const auto before = from.threads.find(id);
        const double earlier = before == from.threads.end() ? 0.0 : before->second.cpuSeconds;
        split[static_cast<size_t>(thread.work)] +=
            100.0 * (thread.cpuSeconds - earlier) / (to.wallSeconds - from.wallSeconds);
    }
    return split;
}

const char* workName(Work work) {
    constexpr const char* kNames[] = {"link",      "decoding",  "copying", "drawing",
                                      "interface", "recording", "other"};
    return kNames[static_cast<size_t>(work)];
}

}  // namespace orvelle::bench
