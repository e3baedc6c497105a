#include "platform/run_file.h"

#include "platform/freedesktop.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>

namespace orvelle {

bool runFile(const std::string& path) {
    const QFileInfo file(QString::fromStdString(path));
    if (!file.isFile()) {
        qCWarning(lcPlatform, "not a file: %s", path.c_str());
        return false;
    }
    const QString absolute = file.absoluteFilePath();
    const bool started = file.isExecutable()
                             ? QProcess::startDetached(absolute, {}, file.absolutePath())
                             : QProcess::startDetached(QStringLiteral("xdg-open"), {absolute});
    if (!started)
        qCWarning(lcPlatform, "cannot start %s", path.c_str());
    return started;
}

}  // namespace orvelle
