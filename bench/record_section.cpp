#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QPushButton>
#include <QTimer>

#include "core/file_utils.h"
#include "device/device.h"
#include "grid_reading.h"
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
/// Opening the files, and writing the group of pictures that each begins with, is over by then.
constexpr int kBeginMs = 3000;
/// Longer than all that is recorded, so that a clip's end is no gap in it.
constexpr int kSectionSeconds = 120;
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

GridUsage usageOfRecording(const CameraSet& cameras, const GridWindow& grid) {
    clickInEach(grid, recordButton);
    runFor(kBeginMs);
    const GridUsage usage = GridUsage::over(kMeasureMs, cameras, grid);
    clickInEach(grid, saveButton);
    return usage;
}

/// The CPU of the middle one; the last one's details are as good as any.
double addRuns(const QString& name, const std::vector<GridUsage>& runs, Report& report) {
    std::vector<double> percents;
    for (const GridUsage& usage : runs)
        percents.push_back(usage.cpuPct());
    const double middle = median(percents);
    report.add(name + QStringLiteral("_cpu_pct"), middle);
    runs.back().addDetails(name, report);
    return middle;
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
    CameraSet cameras(QStringLiteral("BENCHRECORD"), kGridCameras,
                      bench.clipSource("360p", kSectionSeconds), CameraSet::Processes::kEach);
    if (!cameras.connectAll())
        return false;
    GridWindow grid(cameras.devices());
    if (!grid.play(kPlayTimeoutMs))
        return false;
    runFor(kBarsGoneMs);
    const DialogCloser closer;  // saving goes on by itself, and ends with a dialog
    std::vector<GridUsage> playing;
    std::vector<GridUsage> recording;
    for (int run = 0; run < kRuns; ++run) {
        playing.push_back(GridUsage::over(kMeasureMs, cameras, grid));
        recording.push_back(usageOfRecording(cameras, grid));
        runFor(kSettleMs);
    }
    int missing = 0;
    for (const KvDevice* camera : cameras.devices())
        missing += picturesMissing(*camera);
    const double played = addRuns(QStringLiteral("record_16_playing"), playing, bench.report());
    const double recorded =
        addRuns(QStringLiteral("record_16_recording"), recording, bench.report());
    bench.report().add(QStringLiteral("record_16_cpu_ratio"), recorded / played,
                       QStringLiteral("<= 1.05"));
    bench.report().add(QStringLiteral("record_dropped"), missing, QStringLiteral("0"));
    return true;
}

}  // namespace orvelle::bench
