#include <QElapsedTimer>
#include <QProcess>

#include "grid_window.h"
#include "median.h"
#include "paint_watch.h"
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
    report.add(QStringLiteral("playback_start_ms"), median(times), QStringLiteral("<= 1500"));
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
