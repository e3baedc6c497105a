#include "platform/open_folder.h"

#include "platform/freedesktop.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>

namespace orvelle {

bool openFolder(const std::string& path) {
    const QFileInfo folder(QString::fromStdString(path));
    if (!folder.isDir()) {
        qCWarning(lcPlatform, "not a folder: %s", path.c_str());
        return false;
    }
    // An absolute path cannot be taken for an option.
    if (QProcess::startDetached(QStringLiteral("xdg-open"), {folder.absoluteFilePath()}))
        return true;
    qCWarning(lcPlatform, "no xdg-open to show %s", path.c_str());
    return false;
}

}  // namespace orvelle
