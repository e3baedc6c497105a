#include <QElapsedTimer>
#include <QProcess>

#include "sections.h"
#include "workbench.h"

namespace orvelle::bench {

namespace {

constexpr int kWindowTimeoutMs = 20000;
constexpr int kEndTimeoutMs = 10000;

}  // namespace

bool measureStartUp(Workbench& bench) {
    QProcess client;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), bench.path("data"));
    client.setProcessEnvironment(environment);
    QElapsedTimer timer;
    timer.start();
    client.start(Workbench::program("orvelle"), QStringList());
    QProcess search;
    search.setStandardOutputFile(QProcess::nullDevice());
    search.start(
        QStringLiteral("xdotool"),
        {QStringLiteral("search"), QStringLiteral("--sync"), QStringLiteral("--onlyvisible"),
         QStringLiteral("--name"), QStringLiteral("^Orvelle$")});
    const bool found = search.waitForFinished(kWindowTimeoutMs) && search.exitCode() == 0;
    bench.report().add(QStringLiteral("startup_to_window_ms"),
                       static_cast<double>(timer.elapsed()));
    client.terminate();
    return client.waitForFinished(kEndTimeoutMs) && found;
}

}  // namespace orvelle::bench
