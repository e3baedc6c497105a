#include "grid_window.h"

#include <algorithm>

#include "device/device_manager.h"
#include "render/video_view.h"
#include "system/camera_set.h"
#include "ui/list/cameras_view.h"
#include "ui/preview/device_player_view.h"
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
    KvDeviceManager::instance()->addGroup(std::move(entry));
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
    m_counts.resize(m_tiles.size());
    for (size_t i = 0; i < m_tiles.size(); ++i)
        count(i);
    // Each view says so of its window.
    QObject::connect(m_tiles.front()->findChild<KvVideoView*>(), &QOpenGLWidget::frameSwapped,
                     &m_window, [this] { ++m_compositions; });
}

void GridWindow::count(size_t tile) {
    const KvVideoView* view = m_tiles[tile]->findChild<KvVideoView*>();
    QObject::connect(view, &KvVideoView::updateAsyncSignal, &m_window,
                     [this, tile] { m_counts[tile].isDue = true; });
    QObject::connect(view, &QOpenGLWidget::frameSwapped, &m_window, [this, tile] {
        m_counts[tile].shown += m_counts[tile].isDue ? 1 : 0;
        m_counts[tile].isDue = false;
    });
}

bool GridWindow::play(int timeoutMs) {
    m_window.show();
    emit m_window.findChild<KvCamerasView*>()->clickDevice(m_entry);
    return test::waitUntil(timeoutMs, [this] {
        return std::all_of(m_counts.begin(), m_counts.end(),
                           [](const Count& count) { return count.shown >= kEnoughPictures; });
    });
}

bool GridWindow::maximise() {
    const int width = m_window.width();
    m_window.showMaximized();
    return test::waitUntil(kMaximiseTimeoutMs, [this, width] { return m_window.width() > width; });
}

std::vector<uint64_t> GridWindow::picturesShown() const {
    std::vector<uint64_t> shown;
    for (const Count& count : m_counts)
        shown.push_back(count.shown);
    return shown;
}

}  // namespace orvelle::bench
