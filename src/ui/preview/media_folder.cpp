#include "ui/preview/media_folder.h"

#include "core/file_utils.h"
#include "device/device_manager.h"
#include "render/video_surface.h"
#include "ui/dialogs/alert_dialog.h"
#include "ui/widgets/text.h"
#include "ui/widgets/toast.h"

namespace orvelle {

QString usableMediaFolder(QString (*folderOf)(const QString& uid), const QString& uid,
                          QWidget* over) {
    const QString folder = folderOf(uid);
    if (KvFileUtils::exists(folder))
        return folder;
    return agreesToDefaultFolder(over) ? folderOf(uid) : QString();
}

bool agreesToDefaultFolder(QWidget* over) {
    KvAlertDialog question(text("directory_not_exists_reset_to_default_path"), over->window());
    if (question.execCentred(over) == 0)
        return false;
    KvFileUtils::resetMediaRoot();
    return true;
}

void nameMediaFolder(const QString& uid) {
    KvDeviceManager* const manager = KvDeviceManager::instance();
    const KvDevice* const device = manager ? manager->findDevice(uid) : nullptr;
    if (device)
        manager->nameMediaFolder(*device);
}

QString saveSnapshot(VideoSurface& view, const QString& uid, const QString& name,
                     const QDateTime& takenAt, QWidget* over, KvToast& toast) {
    const QString folder = usableMediaFolder(KvFileUtils::screenshotPath, uid, over);
    if (folder.isEmpty())
        return {};
    const QString path = QStringLiteral("%1/%2.jpg").arg(folder, name);
    if (view.snapshot(path, takenAt)) {
        nameMediaFolder(uid);
        return path;
    }
    toast.show(over, text("screenshot_failed"));
    return {};
}

}  // namespace orvelle
