#include <QApplication>
#include <QCommandLineParser>
#include <QDateTime>
#include <QElapsedTimer>
#include <QLoggingCategory>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>

#include "camera/card/recording_name.h"
#include "device/tutk_device.h"
#include "link/av.h"
#include "link/client/link_client.h"
#include "link/iotc.h"
#include "media/live/tutk_player.h"
#include "median.h"
#include "playback_watch.h"
#include "process_usage.h"
#include "support/camera_process.h"
#include "support/sound_server.h"
#include "support/udp_relay.h"
#include "system/camera_set.h"

// Watches a recording being played, picture by picture and sample by sample:
//
//     orvelle-playback-watch --sd DIR [--delay MS] [--loss PERCENT] [--rate BITS] ACTION...
//
// Actions: play:SECOND-OF-THE-FIRST-RECORDING run:SECONDS pause:SECONDS

namespace orvelle::bench {

using test::runFor;
using test::waitUntil;

namespace {

constexpr char kUid[] = "PLAYBACKWATCH";

class Watch {
public:
    explicit Watch(int64_t cardStartSec)
        : m_cardStartSec(cardStartSec), m_view(cardStartSec * 1'000'000) {}

    bool connect(uint16_t port) {
        qputenv("ORVELLE_CAMERA_ADDRESSES",
                QByteArray(kUid) + "=127.0.0.1:" + QByteArray::number(port));
        m_device.setUid(QLatin1String(kUid));
        m_device.setPassword(QLatin1String(test::CameraProcess::kPassword));
        if (m_device.init() != 0)
            return false;
        m_player.setDevice(&m_device);
        m_player.setView(&m_view);
        m_player.setCallback(this, [](void* watch, int32_t event, double a, double) -> int32_t {
            static_cast<Watch*>(watch)->take(event, a);
            return 0;
        });
        return true;
    }

    bool act(const QString& action) {
        const QString verb = action.section(QLatin1Char(':'), 0, 0);
        const double value = action.section(QLatin1Char(':'), 1).toDouble();
        if (verb == QLatin1String("play"))
            return play(value);
        if (verb == QLatin1String("run")) {
            watchFor(value);
            return true;
        }
        m_player.pause();
        runFor(static_cast<int>(value * 1000));
        const int64_t resumedUs = wallClockUs();
        m_player.resume();
        waitUntil(5000, [this] { return m_view.size() > 0; });
        const auto pictures = m_view.take();
        std::printf("resumed: picture after %.0f ms\n",
                    pictures.empty() ? -1.0 : double(pictures[0].wallUs - resumedUs) / 1e3);
        return true;
    }

    bool startSound() { return m_sink.start(QStringLiteral("desk")); }
    void end() {
        m_player.shutdown();
        m_sink.stop();
        m_player.setDevice(nullptr);
        m_device.uninit();
    }

private:
    void take(int32_t event, double seconds) {
        if (event == KvBasePlayerProgress || event == KvBasePlayerFirstFrame) {
            const double at = event == KvBasePlayerProgress ? seconds : m_player.outputTime();
            m_view.label(m_fromSec * 1'000'000 + std::llround(at * 1e6));
        }
        if (event == KvBasePlayerWaiting)
            std::printf("  %s\n", seconds > 0.5 ? "waits" : "goes on");
        if (event == KvBasePlayerVideoEnded)
            m_ended = true;
        if (event == KvBasePlayerOpenFailed)
            std::printf("failed\n");
    }

    bool play(double second) {
        QElapsedTimer timer;
        timer.start();
        m_player.shutdown();
        const double stopMs = double(timer.nsecsElapsed()) / 1e6;
        m_view.take();
        m_ended = false;
        m_fromSec = m_cardStartSec + std::llround(second);
        m_player.setStartTime(QDateTime::fromSecsSinceEpoch(m_fromSec));
        m_player.setRecordingStart(QDateTime::fromSecsSinceEpoch(
            m_fromSec - (m_fromSec - m_cardStartSec) % kRecordingSec));
        const int64_t askedUs = wallClockUs();
        if (m_player.play() < 0)
            return false;
        const double playMs = double(wallClockUs() - askedUs) / 1e3;
        if (!waitUntil(20000, [this] { return m_view.size() > 0; }))
            return false;
        const auto first = m_view.take().front();
        std::printf(
            "play %+.0f s: picture of %+.3f s after %.0f ms (stop %.1f ms, start %.1f ms)\n",
            second, double(first.stampUs - m_cardStartSec * 1'000'000) / 1e6,
            double(first.wallUs - askedUs) / 1e3, stopMs, playMs);
        std::fflush(stdout);
        return true;
    }

    void watchFor(double seconds) {
        const double memoryBefore = residentMib();
        double memoryMost = memoryBefore;
        QElapsedTimer timer;
        timer.start();
        const int64_t fromUs = wallClockUs();
        while (timer.elapsed() < seconds * 1000 && !m_ended) {
            runFor(200);
            memoryMost = std::max(memoryMost, residentMib());
        }
        const int64_t toUs = wallClockUs();
        // What has left the sink is here a moment later.
        runFor(300);
        report(m_view.take(), hear(m_sink, fromUs, toUs));
        std::printf("  memory %+.1f MiB%s\n", memoryMost - memoryBefore, m_ended ? ", ended" : "");
        std::fflush(stdout);
    }

    void report(const std::vector<ShownPicture>& pictures, const HeardSound& sound) {
        if (pictures.size() < 3)
            return void(std::printf("  %zu pictures\n", pictures.size()));
        const PictureFigures figures = figuresOf(pictures);
        std::printf(
            "  pictures %zu, %.2f/s recorded, from %+.3f s to %+.3f s: speed %.4f, "
            "skipped %d, repeated %d, widest gap %.0f ms, label off <= %.0f ms\n",
            pictures.size(), 1000 / figures.periodMs, sinceCard(pictures.front().stampUs),
            sinceCard(pictures.back().stampUs), figures.speed, figures.skipped, figures.repeated,
            figures.widestMs, figures.labelMs);
        reportSound(pictures, sound);
    }

    double sinceCard(int64_t us) const { return double(us - m_cardStartSec * 1'000'000) / 1e6; }

    void reportSound(const std::vector<ShownPicture>& pictures, const HeardSound& sound) {
        const std::vector<double> offsMs = lipSyncMs(pictures, sound);
        if (offsMs.empty())
            return void(std::printf("  no sound\n"));
        const auto [least, most] = std::minmax_element(offsMs.begin(), offsMs.end());
        std::printf(
            "  sound %.1f s, beeps %zu, gaps %d (longest %.0f ms), lip sync %.0f (%.0f to "
            "%.0f) ms\n",
            sound.heardSec, sound.beepsUs.size(), sound.gaps, sound.longestGapMs, median(offsMs),
            *least, *most);
    }

    const int64_t m_cardStartSec;
    KvTUTKDevice m_device;
    PictureLog m_view;
    SinkLog m_sink;
    KvTUTKPlayer m_player;
    std::atomic<int64_t> m_fromSec{0};
    std::atomic<bool> m_ended{false};
};

int64_t firstRecording(const QString& directory) {
    int64_t first = 0;
    for (const QString& name : QDir(directory).entryList(QDir::Files)) {
        const auto read = readRecordingName(name);
        if (read && !read->isUnfinished && (first == 0 || read->startSec < first))
            first = read->startSec;
    }
    return first;
}

int run() {
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{QStringLiteral("sd"), {}, QStringLiteral("DIR")},
                       {QStringLiteral("delay"), {}, QStringLiteral("MS"), QStringLiteral("0")},
                       {QStringLiteral("loss"), {}, QStringLiteral("%"), QStringLiteral("0")},
                       {QStringLiteral("rate"), {}, QStringLiteral("BITS"), QStringLiteral("0")}});
    parser.addPositionalArgument(QStringLiteral("actions"), {});
    parser.process(*QCoreApplication::instance());
    const QString card = parser.value(QStringLiteral("sd"));
    RelayPath path;
    path.delayMs = parser.value(QStringLiteral("delay")).toInt();
    path.lossPercent = parser.value(QStringLiteral("loss")).toDouble();
    path.bitsPerSecond = parser.value(QStringLiteral("rate")).toLongLong();

    const uint16_t port = 40000 + static_cast<uint16_t>(QCoreApplication::applicationPid() % 20000);
    test::CameraProcess camera(
        {QStringLiteral("--uid"), QLatin1String(kUid), QStringLiteral("--fps"), QStringLiteral("1"),
         QStringLiteral("--size"), QStringLiteral("360p"), QStringLiteral("--port"),
         QString::number(port), QStringLiteral("--sd"), card, QStringLiteral("--sd-size"),
         QStringLiteral("100000")});
    UdpRelay relay(port);
    relay.setBothPaths(path);
    Watch watch(firstRecording(card));
    // Or the client would find the way past the relay.
    const bool isUp = camera.start() && qputenv("ORVELLE_DISCOVERY_PORT", "47831");
    if (!isUp || !watch.startSound() || !watch.connect(relay.port())) {
        std::printf("no camera or no sound\n");
        return 1;
    }
    bool isGood = true;
    for (const QString& action : parser.positionalArguments())
        isGood = isGood && watch.act(action);
    std::printf("camera %.1f MiB\n", camera.residentMib());
    watch.end();
    return isGood ? 0 : 1;
}

}  // namespace

}  // namespace orvelle::bench

int main(int argc, char** argv) {
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    QApplication application(argc, argv);
    orvelle::test::SoundServer sound;
    if (!sound.start())
        return 1;
    if (IOTC_Initialize2(0) < 0 || avInitialize(32) < 0)
        return 1;
    const int result = orvelle::bench::run();
    orvelle::LinkClient::instance().shutDown();
    return result;
}
