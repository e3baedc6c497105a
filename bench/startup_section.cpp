#include "client_program.h"
#include "median.h"
#include "sections.h"
#include "workbench.h"

namespace orvelle::bench {

namespace {

constexpr int kStarts = 7;

}  // namespace

bool measureStartUp(Workbench& bench) {
    std::vector<double> times;
    for (int i = 0; i < kStarts; ++i) {
        ClientProgram client(bench.path("data"));
        client.start();
        times.push_back(client.waitUntilSeen());
        if (times.back() < 0.0 || !client.end())
            return false;
    }
    // The first one reads the program from the disk.
    bench.report().add(QStringLiteral("startup_first_to_window_ms"), times.front());
    times.erase(times.begin());
    bench.report().add(QStringLiteral("startup_to_window_ms"), median(std::move(times)),
                       QStringLiteral("<= 300"));
    return true;
}

}  // namespace orvelle::bench
