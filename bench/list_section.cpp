#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QScrollBar>

#include <algorithm>
#include <memory>
#include <vector>

#include "device/device_group.h"
#include "device/tutk_device.h"
#include "sections.h"
#include "ui/list/cameras_view.h"
#include "ui/list/list_view.h"
#include "workbench.h"

namespace orvelle::bench {

namespace {

constexpr int kEntries = 2000;
constexpr QSize kSize(230, 900);

/// Entries of cameras that nobody has connected.
class Entries {
public:
    Entries() {
        for (int i = 0; i < kEntries; ++i) {
            auto camera = std::make_unique<KvTUTKDevice>();
            camera->setUid(QStringLiteral("LIST%1").arg(i, 6, 10, QLatin1Char('0')));
            m_groups.push_back(std::make_unique<KvDeviceGroup>(camera.get()));
            m_groups.back()->setName(QStringLiteral("Camera %1").arg(i));
            m_cameras.push_back(std::move(camera));
        }
    }
    QList<KvDeviceGroup*> list() const {
        QList<KvDeviceGroup*> entries;
        for (const auto& group : m_groups)
            entries.append(group.get());
        return entries;
    }

private:
    std::vector<std::unique_ptr<KvTUTKDevice>> m_cameras;
    std::vector<std::unique_ptr<KvDeviceGroup>> m_groups;
};

/// Milliseconds of the slowest step; each lasts until what it changed is painted.
template <typename Step>
double slowest(int steps, const Step& step) {
    double worst = 0.0;
    for (int i = 0; i < steps; ++i) {
        QElapsedTimer timer;
        timer.start();
        step(i);
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        worst = std::max(worst, double(timer.nsecsElapsed()) / 1e6);
    }
    return worst;
}

}  // namespace

bool measureList(Workbench& bench) {
    const Entries entries;
    KvCamerasView view;
    view.resize(kSize);
    view.show();
    view.setGroups(entries.list());
    QCoreApplication::processEvents();
    auto* filter = view.findChild<QLineEdit*>();
    auto* list = view.findChild<KvListView*>();
    if (!filter || !list)
        return false;
    const QString typed = QStringLiteral("camera 1999");
    const double filtering = slowest(2 * typed.size() + 1, [&](int i) {
        filter->setText(typed.left(i <= typed.size() ? i : 2 * typed.size() + 1 - i));
    });
    QScrollBar* bar = list->verticalScrollBar();
    const double scrolling =
        slowest(100, [bar](int i) { bar->setValue(bar->maximum() / 100 * ((i * 37) % 100)); });
    bench.report().add(QStringLiteral("list_2000_filter_ms"), filtering, QStringLiteral("<= 16"));
    bench.report().add(QStringLiteral("list_2000_scroll_ms"), scrolling, QStringLiteral("<= 16"));
    return true;
}

}  // namespace orvelle::bench
