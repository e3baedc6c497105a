#include "workbench.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>

#include "process_usage.h"
#include "system/camera_set.h"

namespace orvelle::bench {

QString Workbench::program(const char* name) {
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + QLatin1String(name);
}

QString Workbench::clip(const char* size, int seconds) {
    const QString file =
        m_directory.filePath(QStringLiteral("%1-%2s.mp4").arg(QLatin1String(size)).arg(seconds));
    if (!QFile::exists(file))
        QProcess::execute(
            program("orvelle-camera"),
            {QStringLiteral("--make-clip"), file, QStringLiteral("--seconds"),
             QString::number(seconds), QStringLiteral("--size"), QLatin1String(size)});
    return file;
}

QStringList Workbench::clipSource(const char* size, int seconds) {
    return {QStringLiteral("--source"), clip(size, seconds)};
}

double Workbench::cpuPercentFor(int ms) {
    const ProcessUsage before = ProcessUsage::now();
    test::runFor(ms);
    return cpuPercent(before, ProcessUsage::now());
}

}  // namespace orvelle::bench
