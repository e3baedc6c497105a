#include <QElapsedTimer>

#include <memory>

#include "device/device_manager.h"
#include "grid_window.h"
#include "link/device_code.h"
#include "sections.h"
#include "system/camera_set.h"
#include "system/event_loop_probe.h"
#include "ui/dialogs/app_cancel_dialog.h"
#include "ui/dialogs/device_add_dialog.h"
#include "ui/dialogs/device_delete_dialog.h"
#include "workbench.h"

namespace orvelle::bench {

using test::CameraProcess;
using test::CameraSet;
using test::runFor;

namespace {

constexpr int kOfflineCameras = 4;
/// The rounds that look for the cameras that are away are 5 s apart.
constexpr int kRoundMs = 7000;
constexpr char kAddedUid[] = "BENCHADDED";

/// Bound, but nowhere to be found.
std::vector<KvDevice*> addOfflineCameras() {
    std::vector<KvDevice*> offline;
    for (int i = 0; i < kOfflineCameras; ++i) {
        auto device = std::make_unique<KvTUTKDevice>();
        device->setUid(QStringLiteral("BENCHAWAY%1").arg(i));
        device->setPassword(QLatin1String(CameraProcess::kPassword));
        offline.push_back(device.get());
        KvDeviceManager::instance()->addDevice(std::move(device));
    }
    return offline;
}

bool addCamera(MainWindow& window) {
    KvTUTKDeviceAddDialog dialog(KvDeviceManager::instance()->reaper(), &window);
    dialog.start(QString::fromStdString(encodeDeviceCode(kAddedUid, CameraProcess::kPassword)));
    return dialog.execCentred() == QDialog::Accepted &&
           dialog.status() == KvTUTKDeviceAddDialog::kAdded;
}

bool removeCamera(MainWindow& window) {
    const KvDeviceManager* manager = KvDeviceManager::instance();
    KvDeviceGroup* const entry =
        manager->findDeviceGroup(manager->findDevice(QLatin1String(kAddedUid)));
    return entry && KvTUTKDeviceDeleteDialog(entry, &window).execCentred() == QDialog::Accepted;
}

bool measureWorstDelay(MainWindow& window, Report& report) {
    const test::EventLoopProbe probe;
    runFor(kRoundMs);
    report.add(QStringLiteral("ui_worst_delay_playing_ms"), probe.worstDelayMs());
    const bool changed = addCamera(window) && removeCamera(window);
    runFor(kSettleMs);
    report.add(QStringLiteral("ui_worst_delay_ms"), probe.worstDelayMs(), QStringLiteral("< 100"));
    return changed;
}

/// As the program's way out does it.
void measureClosing(std::unique_ptr<GridWindow> grid, Report& report) {
    QElapsedTimer timer;
    timer.start();
    grid->window().releaseDevices();
    report.add(QStringLiteral("grid_stop_ms"), static_cast<double>(timer.elapsed()));
    KvAppCancelDialog(&grid->window()).start();
    grid.reset();
    KvDeviceManager::release();
    report.add(QStringLiteral("grid_close_ms"), static_cast<double>(timer.elapsed()),
               QStringLiteral("< 2000"));
}

}  // namespace

bool measureDelay(Workbench& bench) {
    CameraSet cameras(QStringLiteral("BENCHDELAY"), kGridCameras, bench.clipSource("360p"),
                      CameraSet::Processes::kEach);
    CameraProcess added(bench.clipSource("360p")
                        << QStringLiteral("--uid") << QLatin1String(kAddedUid));
    if (!cameras.connectAll() || !added.start())
        return false;
    auto grid = std::make_unique<GridWindow>(cameras.devices());
    if (!grid->play(kPlayTimeoutMs))
        return false;
    for (KvDevice* device : addOfflineCameras())
        if (!KvDeviceManager::instance()->addGroup(std::make_unique<KvDeviceGroup>(device)))
            return false;
    emit KvDeviceManager::instance()->listChanged();
    runFor(kSettleMs);
    const bool changed = measureWorstDelay(grid->window(), bench.report());
    measureClosing(std::move(grid), bench.report());
    return changed;
}

}  // namespace orvelle::bench
