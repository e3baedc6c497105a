#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QPushButton>
#include <QTimer>

#include "core/file_utils.h"
#include "device/device.h"
#include "grid_window.h"
#include "median.h"
#include "sections.h"
#include "system/camera_set.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/device_record_view.h"
#include "ui/widgets/push_button.h"
#include "video_file.h"
#include "workbench.h"

namespace orvelle::bench {

using test::CameraSet;
using test::runFor;

namespace {

constexpr int kRuns = 3;
constexpr int kMeasureMs = 8000;
/// A recording begins with the next key frame, and those are 2 s apart.
constexpr int kBeginMs = 3000;
constexpr int kPicturesOfOne = kMeasureMs / 1000 * 15;

/// Closes every dialog that opens, as a user would who wants none.
class DialogCloser {
public:
    DialogCloser() {
        m_timer.callOnTimeout([] {
            if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                dialog->reject();
        });
        m_timer.start(10);
    }

private:
    QTimer m_timer;
};

void clickInEach(const GridWindow& grid, QPushButton* (*buttonOf)(const KvDevicePlayerViewUI&)) {
    for (const KvDevicePlayerView* tile : grid.tiles())
        buttonOf(*tile->findChild<KvDevicePlayerViewUI*>())->click();
}

QPushButton* recordButton(const KvDevicePlayerViewUI& tile) {
    return tile.button(KvDevicePlayerViewUI::kRecord);
}

QPushButton* saveButton(const KvDevicePlayerViewUI& tile) {
    return tile.recordView()->saveButton();
}

double cpuOfRecording(const GridWindow& grid) {
    clickInEach(grid, recordButton);
    runFor(kBeginMs);
    const double percent = Workbench::cpuPercentFor(kMeasureMs);
    const DialogCloser closer;
    clickInEach(grid, saveButton);
    return percent;
}

/// Pictures that the recordings of a camera lack; a recording that cannot be read lacks all.
int picturesMissing(const KvDevice& camera) {
    const QDir folder(KvFileUtils::videoPath(camera.uid()));
    const QStringList names = folder.entryList({QStringLiteral("*.mp4")}, QDir::Files);
    int missing = (kRuns - names.size()) * kPicturesOfOne;
    for (const QString& name : names) {
        const VideoFile file = VideoFile::read(folder.filePath(name));
        missing += file.packets.empty() ? kPicturesOfOne : file.gaps();
    }
    return missing;
}

}  // namespace

bool measureRecording(Workbench& bench) {
    CameraSet cameras(QStringLiteral("BENCHRECORD"), kGridCameras, bench.clipSource("360p"),
                      CameraSet::Processes::kEach);
    if (!cameras.connectAll())
        return false;
    GridWindow grid(cameras.devices());
    if (!grid.play(kPlayTimeoutMs))
        return false;
    runFor(kBarsGoneMs);
    std::vector<double> playing;
    std::vector<double> recording;
    for (int run = 0; run < kRuns; ++run) {
        playing.push_back(Workbench::cpuPercentFor(kMeasureMs));
        recording.push_back(cpuOfRecording(grid));
        runFor(kSettleMs);
    }
    int missing = 0;
    for (const KvDevice* camera : cameras.devices())
        missing += picturesMissing(*camera);
    Report& report = bench.report();
    report.add(QStringLiteral("record_16_playing_cpu_pct"), median(playing));
    report.add(QStringLiteral("record_16_recording_cpu_pct"), median(recording));
    report.add(QStringLiteral("record_16_cpu_ratio"), median(recording) / median(playing),
               QStringLiteral("<= 1.05"));
    report.add(QStringLiteral("record_dropped"), missing, QStringLiteral("0"));
    return true;
}

}  // namespace orvelle::bench
