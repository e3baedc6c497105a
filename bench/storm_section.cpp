#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "link/av.h"
#include "link/io_types.h"
#include "link/iotc.h"
#include "link/limits.h"
#include "sections.h"
#include "support/storm.h"
#include "system/camera_set.h"
#include "workbench.h"

namespace orvelle::bench {

using test::CameraProcess;
using test::runFor;
using test::Storm;

namespace {

constexpr char kUid[] = "BENCHSTORM";
constexpr int kFloodPerSecond = 10'000;
constexpr int kHalfOpen = 1000;
constexpr int kLoginEveryMs = 3000;
constexpr int kSampleMs = 250;
constexpr int kCalmMs = 60'000;
constexpr uint32_t kLoginSeconds = 10;

/// Of one kind of strangers; ORVELLE_STORM_SECONDS makes it shorter.
int phaseMs() {
    const int wanted = qEnvironmentVariableIntValue("ORVELLE_STORM_SECONDS");
    return (wanted > 0 ? wanted : 30) * 1000;
}

struct Phase {
    const char* name;
    Storm::Kind kind;
    int perSecond;
    int sources;
    int hosts;
};
constexpr Phase kPhases[] = {
    {"handshakes", Storm::Kind::Handshakes, kFloodPerSecond, 20, 20},
    {"noise", Storm::Kind::Noise, kFloodPerSecond, 20, 20},
    {"wrong_shares", Storm::Kind::WrongShares, kFloodPerSecond, 20, 20},
    {"probes", Storm::Kind::Probes, kFloodPerSecond, 20, 20},
    {"half_open", Storm::Kind::HalfOpen, kHalfOpen, kHalfOpen, 250},
    {"wrong_passwords", Storm::Kind::WrongPasswords, kHalfOpen, 20, 20},
};

/// One session with the camera.
class Session {
public:
    ~Session() {
        if (m_av >= 0)
            avClientStop(m_av);
        IOTC_Session_Close(m_sid);
    }
    bool connect() {
        if (IOTC_Connect_ByUID_Parallel(kUid, m_sid) < 0)
            return false;
        m_av = avClientStart2(m_sid, kLinkAccount, CameraProcess::kPassword, kLoginSeconds, nullptr,
                              0, nullptr);
        return m_av >= 0;
    }
    int av() const { return m_av; }

private:
    const int m_sid = IOTC_Get_SessionID();
    int m_av = -1;
};

/// Counts the pictures that come, on a thread of its own.
class Viewer {
public:
    bool start() {
        const char request[8] = {};
        if (!m_session.connect() ||
            avSendIOCtrl(m_session.av(), IOTYPE_USER_IPCAM_START, request, sizeof request) < 0)
            return false;
        m_thread = std::thread([this] { run(); });
        return true;
    }
    ~Viewer() {
        m_isStopped = true;
        if (m_thread.joinable())
            m_thread.join();
    }
    int pictures() const { return m_pictures; }
    bool isThere() const { return m_isThere; }

private:
    void run() {
        std::vector<char> buffer(kMaxVideoFrameBytes);
        char info[kFrameInfoBytes];
        while (!m_isStopped) {
            avWaitVideo(m_session.av(), 50, {});
            int infoSize = 0;
            uint32_t number = 0;
            const int size =
                avRecvFrameData2(m_session.av(), buffer.data(), static_cast<int>(buffer.size()),
                                 nullptr, nullptr, info, sizeof info, &infoSize, &number);
            if (size > 0)
                ++m_pictures;
            m_isThere = avCheckAudioBuf(m_session.av()) >= 0;
        }
    }

    Session m_session;
    std::atomic<bool> m_isStopped{false}, m_isThere{true};
    std::atomic<int> m_pictures{0};
    std::thread m_thread;
};

/// What one kind of strangers did to the camera.
struct Toll {
    double maxRssMib = 0;
    double fps = 0;
    double worstLoginMs = 0;
    double sentPerSecond = 0;
};

double loginMs() {
    QElapsedTimer timer;
    timer.start();
    Session session;
    const bool isIn = session.connect();
    return isIn ? static_cast<double>(timer.elapsed()) : 1000.0 * kLoginSeconds;
}

Toll endure(const Phase& phase, uint16_t port, const CameraProcess& camera, const Viewer& viewer) {
    Toll toll;
    const int durationMs = phaseMs();
    const int before = viewer.pictures();
    QElapsedTimer timer;
    timer.start();
    Storm storm(phase.kind, port, kUid, phase.perSecond, phase.sources, phase.hosts);
    for (qint64 nextLoginMs = 500; timer.elapsed() < durationMs;) {
        runFor(kSampleMs);
        toll.maxRssMib = std::max(toll.maxRssMib, camera.residentMib());
        if (timer.elapsed() < nextLoginMs)
            continue;
        nextLoginMs += kLoginEveryMs;
        toll.worstLoginMs = std::max(toll.worstLoginMs, loginMs());
    }
    const double seconds = static_cast<double>(timer.elapsed()) / 1000;
    toll.fps = (viewer.pictures() - before) / seconds;
    toll.sentPerSecond = static_cast<double>(storm.sent()) / seconds;
    return toll;
}

uint16_t freePort() {
    DatagramSocket socket;
    sockaddr_in any{};
    any.sin_family = AF_INET;
    any.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return socket.bindExclusively(any) ? socket.port() : uint16_t{0};
}

void addToll(const Phase& phase, const Toll& toll, double restMib, Report& report) {
    const QString name = QStringLiteral("storm_") + QLatin1String(phase.name);
    report.add(name + QStringLiteral("_sent_per_s"), toll.sentPerSecond);
    report.add(name + QStringLiteral("_rss_growth_mib"), toll.maxRssMib - restMib);
    report.add(name + QStringLiteral("_viewer_fps"), toll.fps);
    report.add(name + QStringLiteral("_login_ms"), toll.worstLoginMs);
}

bool measureWith(const CameraProcess& camera, uint16_t port, Report& report) {
    Viewer viewer;
    if (!viewer.start())
        return false;
    runFor(kSettleMs);
    loginMs();  // what the first one takes for good is none of the strangers' doing
    runFor(kSettleMs);
    const double restMib = camera.residentMib();
    Toll worst{0, 1e9, 0, 0};
    for (const Phase& phase : kPhases) {
        const Toll toll = endure(phase, port, camera, viewer);
        addToll(phase, toll, restMib, report);
        worst.maxRssMib = std::max(worst.maxRssMib, toll.maxRssMib);
        worst.fps = std::min(worst.fps, toll.fps);
        worst.worstLoginMs = std::max(worst.worstLoginMs, toll.worstLoginMs);
    }
    runFor(std::min(kCalmMs, 2 * phaseMs()));
    report.add(QStringLiteral("storm_rss_growth_mib"), worst.maxRssMib - restMib,
               QStringLiteral("< 32"));
    report.add(QStringLiteral("storm_rss_left_mib"), camera.residentMib() - restMib,
               QStringLiteral("about 0"));
    report.add(QStringLiteral("storm_viewer_fps_min"), worst.fps, QStringLiteral(">= 14"));
    report.add(QStringLiteral("storm_login_ms"), worst.worstLoginMs, QStringLiteral("<= 3000"));
    return viewer.isThere();
}

}  // namespace

bool measureStorm(Workbench& bench) {
    const uint16_t port = freePort();
    CameraProcess camera(bench.clipSource("360p")
                         << QStringLiteral("--uid") << QLatin1String(kUid)
                         << QStringLiteral("--port") << QString::number(port));
    if (!camera.start())
        return false;
    qputenv("ORVELLE_CAMERA_ADDRESSES",
            QByteArray(kUid) + "=127.0.0.1:" + QByteArray::number(port));
    if (IOTC_Initialize2(0) < 0 || avInitialize(kMaxLinkChannels) < 0)
        return false;
    return measureWith(camera, port, bench.report());
}

}  // namespace orvelle::bench
