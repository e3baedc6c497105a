#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

#include "latency_probe.h"
#include "media/device_inputs.h"
#include "plain_decoding.h"
#include "process_usage.h"
#include "report.h"
#include "system/camera_set.h"
#include "watch_grid.h"

namespace orvelle::bench {

using test::CameraSet;
using test::runFor;

namespace {

constexpr int kGridCameras = 16;
constexpr int kPlayTimeoutMs = 20000;
constexpr int kSettleMs = 2000;
constexpr int kIdleMs = 10000;
constexpr int kMeasureMs = 12000;
constexpr int kLatencyMs = 60000;

QString program(const char* name) {
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + QLatin1String(name);
}

/// Measures one thing after the other and says which one failed.
class Bench {
public:
    bool run() {
        return step("making the clips", makeClips()) && step("start of the client", startUp()) &&
               step("sixteen cameras", sixteenCameras()) && step("one camera", oneFullHd()) &&
               step("latency", latency());
    }
    const Report& report() const { return m_report; }

private:
    static bool step(const char* name, bool done) {
        std::fprintf(stderr, "%s: %s\n", name, done ? "done" : "FAILED");
        return done;
    }

    QString clip(const char* size) const {
        return m_directory.filePath(QLatin1String(size) + QStringLiteral(".mp4"));
    }

    bool makeClips() const {
        for (const char* size : {"360p", "1080p"}) {
            const QStringList arguments{QStringLiteral("--make-clip"), clip(size),
                                        QStringLiteral("--seconds"),   QStringLiteral("20"),
                                        QStringLiteral("--size"),      QLatin1String(size)};
            if (QProcess::execute(program("orvelle-camera"), arguments) != 0)
                return false;
        }
        return true;
    }

    /// From the start of the client's process until its window can be seen.
    bool startUp() {
        QProcess client;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_DATA_HOME"),
                           m_directory.filePath(QStringLiteral("data")));
        client.setProcessEnvironment(environment);
        QElapsedTimer timer;
        timer.start();
        client.start(program("orvelle"), QStringList());
        QProcess search;
        search.setStandardOutputFile(QProcess::nullDevice());
        search.start(
            QStringLiteral("xdotool"),
            {QStringLiteral("search"), QStringLiteral("--sync"), QStringLiteral("--onlyvisible"),
             QStringLiteral("--name"), QStringLiteral("^Orvelle$")});
        const bool found = search.waitForFinished(20000) && search.exitCode() == 0;
        m_report.add(QStringLiteral("startup_to_window_ms"), static_cast<double>(timer.elapsed()));
        client.terminate();
        return client.waitForFinished(10000) && found;
    }

    bool sixteenCameras() {
        CameraSet cameras(QStringLiteral("BENCHGRID"), kGridCameras,
                          {QStringLiteral("--source"), clip("360p")});
        return cameras.connectAll() && idle() && gridWithoutDrawing(cameras) && gridDrawn(cameras);
    }

    bool idle() {
        runFor(kSettleMs);
        const ProcessUsage before = ProcessUsage::now();
        runFor(kIdleMs);
        const ProcessUsage after = ProcessUsage::now();
        m_report.add(QStringLiteral("idle_16_connected_cpu_pct"), cpuPercent(before, after),
                     QStringLiteral("<= 1"));
        m_report.add(QStringLiteral("idle_wakeups_per_s"), wakeupsPerSecond(before, after));
        return true;
    }

    bool gridWithoutDrawing(const CameraSet& cameras) {
        double client = 0.0;
        {
            WatchGrid grid(cameras.devices(), WatchGrid::Drawing::kOff);
            if (!grid.play(kPlayTimeoutMs))
                return false;
            runFor(kSettleMs);
            client = measureCpu();
        }
        const double plain = plainDecodingCpuPercent(clip("360p"), kGridCameras, kMeasureMs / 1000);
        m_report.add(QStringLiteral("cpu_16x360p_nodraw_pct"), client);
        m_report.add(QStringLiteral("cpu_16x360p_plain_decoding_pct"), plain);
        m_report.add(QStringLiteral("cpu_16x360p_nodraw_ratio"), client / plain,
                     QStringLiteral("<= 1.4"));
        return plain > 0.0;
    }

    bool gridDrawn(const CameraSet& cameras) {
        WatchGrid grid(cameras.devices(), WatchGrid::Drawing::kOn);
        if (!grid.play(kPlayTimeoutMs))
            return false;
        runFor(kSettleMs);
        const uint64_t lostBefore = grid.picturesLost();
        m_report.add(QStringLiteral("cpu_16x360p_pct"), measureCpu(), QStringLiteral("<= 100"));
        m_report.add(QStringLiteral("dropped_frames_16x360p"),
                     static_cast<double>(grid.picturesLost() - lostBefore), QStringLiteral("0"));
        m_report.add(QStringLiteral("rss_16x360p_mib"), residentMib(), QStringLiteral("<= 300"));
        return true;
    }

    bool oneFullHd() {
        CameraSet cameras(QStringLiteral("BENCHFULLHD"), 1,
                          {QStringLiteral("--source"), clip("1080p")});
        if (!cameras.connectAll())
            return false;
        WatchGrid grid(cameras.devices(), WatchGrid::Drawing::kOn);
        if (!grid.play(kPlayTimeoutMs))
            return false;
        runFor(kSettleMs);
        m_report.add(QStringLiteral("cpu_1x1080p_pct"), measureCpu(), QStringLiteral("<= 45"));
        return true;
    }

    bool latency() {
        CameraSet cameras(
            QStringLiteral("BENCHDEMO"), 1,
            {QStringLiteral("--demo"), QStringLiteral("--size"), QStringLiteral("720p")});
        if (!cameras.connectAll())
            return false;
        WatchGrid grid(cameras.devices(), WatchGrid::Drawing::kOn);
        if (!grid.play(kPlayTimeoutMs))
            return false;
        m_report.add(QStringLiteral("first_picture_ms"), grid.firstPictureMs(),
                     QStringLiteral("< 1000"));
        runFor(kSettleMs);
        const LatencyProbe probe(grid.view(0));
        runFor(kLatencyMs);
        m_report.add(QStringLiteral("latency_samples"),
                     static_cast<double>(probe.samples().size()));
        m_report.add(QStringLiteral("latency_p50_ms"), probe.percentileMs(50),
                     QStringLiteral("<= 45"));
        m_report.add(QStringLiteral("latency_p99_ms"), probe.percentileMs(99),
                     QStringLiteral("<= 100"));
        return !probe.samples().empty();
    }

    static double measureCpu() {
        const ProcessUsage before = ProcessUsage::now();
        runFor(kMeasureMs);
        return cpuPercent(before, ProcessUsage::now());
    }

    QTemporaryDir m_directory;
    Report m_report;
};

}  // namespace

}  // namespace orvelle::bench

int main(int argc, char** argv) {
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    qputenv("ORVELLE_DISCOVERY_PORT", "47821");
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption json(QStringLiteral("json"),
                                  QStringLiteral("Also write the figures as JSON."),
                                  QStringLiteral("file"));
    parser.addOption(json);
    parser.addHelpOption();
    parser.process(application);

    orvelle::registerDeviceInputs();
    orvelle::bench::Bench bench;
    const bool complete = bench.run();
    bench.report().print();
    const bool written = !parser.isSet(json) || bench.report().writeJson(parser.value(json));
    return complete && written ? 0 : 1;
}
