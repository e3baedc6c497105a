#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>
#include <cmath>
#include <set>

#include "camera/card/recording_name.h"
#include "device/tutk_device.h"
#include "grid_window.h"
#include "media/live/tutk_player.h"
#include "median.h"
#include "paint_watch.h"
#include "playback_watch.h"
#include "sections.h"
#include "system/camera_set.h"
#include "ui/playback/sdcard_playback_view.h"
#include "ui/playback/sdcard_playback_view_ui.h"
#include "ui/playback/video_time_line_view.h"
#include "ui/preview/device_player_view.h"
#include "ui/widgets/push_button.h"
#include "workbench.h"

namespace orvelle::bench {

using test::CameraSet;
using test::runFor;
using test::waitUntil;

namespace {

constexpr int kChoices = 5;
/// Of each choice, before the next one.
constexpr int kWatchMs = 1500;
constexpr int kSecondsIn = 20;
constexpr int kJoinFrom = 56;
constexpr int kJoinWatchSec = 8;
constexpr int kSoundWatchSec = 4;

/// Takes the time until a recording's first picture is on the screen.
class FirstPicture : public QObject {
public:
    explicit FirstPicture(KvSDCardPlaybackView* page)
        : m_watch(*page->findChild<KvSDCardPlaybackViewUI*>()->videoView()) {
        connect(page, &KvSDCardPlaybackView::hideLoadingViewSignal, this,
                [this] { m_isShown = true; });
        connect(&m_watch, &PaintWatch::onScreen, this, [this] {
            if (m_isShown && m_tookMs < 0.0)
                m_tookMs = static_cast<double>(m_timer.nsecsElapsed()) * 1e-6;
        });
    }

    void expect() {
        m_isShown = false;
        m_tookMs = -1.0;
        m_timer.start();
    }
    /// Negative when it did not come.
    double wait() {
        waitUntil(kPlayTimeoutMs, [this] { return m_tookMs >= 0.0; });
        return m_tookMs;
    }

private:
    PaintWatch m_watch;
    QElapsedTimer m_timer;
    bool m_isShown = false;
    double m_tookMs = -1.0;
};

/// Plays without a window, and looks at what is shown and heard.
class Viewing {
public:
    Viewing(KvTUTKDevice* device, int64_t recordingSec) : m_recordingSec(recordingSec) {
        m_player.setDevice(device);
        m_player.setView(&m_pictures);
        m_player.setRecordingStart(QDateTime::fromSecsSinceEpoch(recordingSec));
    }
    ~Viewing() { m_player.shutdown(); }

    bool listen() { return m_sink.start(QStringLiteral("desk")); }
    bool play(int second) {
        m_player.shutdown();
        m_pictures.take();
        m_player.setStartTime(QDateTime::fromSecsSinceEpoch(m_recordingSec + second));
        return m_player.play() >= 0 &&
               waitUntil(kPlayTimeoutMs, [this] { return m_pictures.size() > 0; });
    }
    void pauseFor(int ms) {
        m_player.pause();
        runFor(ms);
        m_pictures.take();
        m_player.resume();
    }
    /// Of the next seconds; notes the worst lip sync. False without pictures.
    bool watchFor(int seconds, PictureFigures* figures) {
        // The first picture stands a little longer, by which the sound seems late.
        if (!waitUntil(kPlayTimeoutMs, [this] { return m_pictures.size() > 0; }))
            return false;
        m_pictures.take();
        const int64_t fromUs = wallClockUs();
        runFor(seconds * 1000);
        const int64_t toUs = wallClockUs();
        runFor(kSinkDelayMs);
        const auto pictures = m_pictures.take();
        for (const double lateMs : lipSyncMs(pictures, hear(m_sink, fromUs, toUs)))
            m_worstLipSyncMs = std::max(m_worstLipSyncMs, std::fabs(lateMs));
        if (pictures.size() < 3)
            return false;
        *figures = figuresOf(pictures);
        return true;
    }
    /// NaN when nothing was heard.
    double worstLipSyncMs() const {
        return m_worstLipSyncMs < 0.0 ? std::nan("") : m_worstLipSyncMs;
    }

private:
    static constexpr int kSinkDelayMs = 300;

    const int64_t m_recordingSec;
    PictureLog m_pictures{0};
    SinkLog m_sink;
    KvTUTKPlayer m_player;
    double m_worstLipSyncMs = -1.0;
};

/// The start of the first recording that another one follows; 0 without.
int64_t firstOfTwo(const QString& card) {
    std::set<int64_t> starts;
    for (const QString& name : QDir(card).entryList(QDir::Files)) {
        if (const auto read = readRecordingName(name))
            starts.insert(read->startSec);
    }
    for (const int64_t start : starts) {
        if (starts.count(start + kRecordingSec) > 0)
            return start;
    }
    return 0;
}

/// Over the join of two recordings; then sound and picture after a pause and a jump.
bool measureJoin(KvDevice* device, const QString& card, Report& report) {
    auto* camera = dynamic_cast<KvTUTKDevice*>(device);
    const int64_t recordingSec = firstOfTwo(card);
    if (!camera || recordingSec == 0)
        return false;
    Viewing viewing(camera, recordingSec);
    PictureFigures join, other;
    // The sink itself wakes with the first sound.
    const bool isWatched = viewing.listen() && viewing.play(1) && viewing.play(kJoinFrom) &&
                           viewing.watchFor(kJoinWatchSec, &join);
    if (!isWatched)
        return false;
    viewing.pauseFor(kWatchMs);
    const bool isHeard = viewing.watchFor(kSoundWatchSec, &other) && viewing.play(kSecondsIn + 1) &&
                         viewing.watchFor(kSoundWatchSec, &other);
    report.add(QStringLiteral("playback_join_gap_ms"), std::max(0.0, join.widestMs - join.periodMs),
               QStringLiteral("<= 67"));
    report.add(QStringLiteral("playback_lipsync_worst_ms"), viewing.worstLipSyncMs(),
               QStringLiteral("<= 60"));
    return isHeard;
}

bool makeCard(const QString& directory) {
    return QProcess::execute(Workbench::program("orvelle-camera"),
                             {QStringLiteral("--make-card"), directory, QStringLiteral("--days"),
                              QStringLiteral("1")}) == 0;
}

/// One moment in each of some recordings, the oldest first.
bool measureChoices(KvVideoTimeLineView& timeLine, FirstPicture& picture, Report& report) {
    std::vector<double> times;
    for (int i = 0; i < qMin(kChoices, timeLine.marks().size()); ++i) {
        runFor(kWatchMs);
        picture.expect();
        emit timeLine.selectedTime(timeLine.marks()[i].start + kSecondsIn);
        times.push_back(picture.wait());
        if (times.back() < 0.0)
            return false;
    }
    if (times.empty())
        return false;
    report.add(QStringLiteral("playback_start_ms"), median(times), QStringLiteral("<= 200"));
    report.add(QStringLiteral("playback_start_worst_ms"),
               *std::max_element(times.begin(), times.end()));
    return true;
}

}  // namespace

bool measurePlayback(Workbench& bench) {
    const QString card = bench.path("card");
    if (!makeCard(card))
        return false;
    CameraSet cameras(QStringLiteral("BENCHCARD"), 1,
                      bench.clipSource("720p") << QStringLiteral("--sd") << card);
    if (!cameras.connectAll())
        return false;
    if (!measureJoin(cameras.devices().front(), card, bench.report()))
        return false;
    GridWindow grid(cameras.devices());
    if (!grid.play(kPlayTimeoutMs))
        return false;
    auto* page = grid.window().findChild<KvSDCardPlaybackView*>();
    FirstPicture picture(page);
    picture.expect();
    grid.tiles()
        .front()
        ->findChild<KvDevicePlayerViewUI*>()
        ->button(KvDevicePlayerViewUI::kSdCard)
        ->click();
    const double opened = picture.wait();
    bench.report().add(QStringLiteral("playback_page_to_picture_ms"), opened);
    return opened >= 0.0 &&
           measureChoices(*page->findChild<KvVideoTimeLineView*>(), picture, bench.report());
}

}  // namespace orvelle::bench
