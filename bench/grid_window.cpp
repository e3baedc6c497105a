#include "grid_window.h"

#include <algorithm>

#include "device/device_manager.h"
#include "paint_watch.h"
#include "system/camera_set.h"
#include "ui/list/cameras_view.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/device_player_view_ui.h"
#include "ui/preview/devices_preview_ui.h"
#include "ui/preview/grid_layout.h"

namespace orvelle::bench {

namespace {

/// One picture may be the black one that a tile begins with.
constexpr uint64_t kEnoughPictures = 3;
constexpr int kMaximiseTimeoutMs = 3000;

KvDeviceGroup* listEntry(std::unique_ptr<KvDeviceGroup> entry, const QString& name) {
    KvDeviceGroup* const listed = entry.get();
    entry->setName(name);
    if (!KvDeviceManager::instance()->addGroup(std::move(entry)))
        qFatal("the grid's entry cannot be listed");
    return listed;
}

KvDeviceGroup* listCameras(const std::vector<KvDevice*>& devices) {
    KvDeviceGroup* camera = nullptr;
    for (KvDevice* device : devices)
        camera = listEntry(std::make_unique<KvDeviceGroup>(device), device->uid());
    if (devices.size() == 1)
        return camera;
    auto group = std::make_unique<KvDeviceGroup>();
    group->setType(KvDeviceGroup::kGroup);
    group->setDevices({devices.begin(), devices.end()});
    group->setLayout(kGrid4x4);
    group->save();
    return listEntry(std::move(group), QStringLiteral("Bench"));
}

}  // namespace

GridWindow::GridWindow(const std::vector<KvDevice*>& devices) : m_entry(listCameras(devices)) {
    const auto& tiles = m_window.findChild<KvDevicesPreviewUI*>()->tiles();
    m_tiles.assign(tiles.begin(), tiles.begin() + static_cast<std::ptrdiff_t>(devices.size()));
    for (const KvDevicePlayerView* tile : m_tiles)
        m_watches.push_back(
            std::make_unique<PaintWatch>(*tile->findChild<KvDevicePlayerViewUI*>()->videoView()));
    m_window.installEventFilter(this);
}

GridWindow::~GridWindow() = default;

bool GridWindow::eventFilter(QObject*, QEvent* event) {
    m_compositions += event->type() == QEvent::UpdateRequest ? 1 : 0;
    return false;
}

bool GridWindow::play(int timeoutMs) {
    m_window.show();
    emit m_window.findChild<KvCamerasView*>()->clickDevice(m_entry);
    return test::waitUntil(timeoutMs, [this] {
        return std::all_of(m_watches.begin(), m_watches.end(),
                           [](const auto& watch) { return watch->painted() >= kEnoughPictures; });
    });
}

bool GridWindow::maximise() {
    const int width = m_window.width();
    m_window.showMaximized();
    return test::waitUntil(kMaximiseTimeoutMs, [this, width] { return m_window.width() > width; });
}

std::vector<uint64_t> GridWindow::picturesShown() const {
    std::vector<uint64_t> shown;
    for (const auto& watch : m_watches)
        shown.push_back(watch->painted());
    return shown;
}

}  // namespace orvelle::bench
