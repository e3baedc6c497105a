#include "core/shipped_files.h"

#include <QCoreApplication>
#include <QDir>

namespace orvelle {

// `installed` is relative to the program's folder, too.
static QString shippedFolder(const QString& beside, const QString& installed) {
    const QDir program(QCoreApplication::applicationDirPath());
    const QString path = program.filePath(beside);
    return QDir(path).exists() ? path : QDir::cleanPath(program.filePath(installed));
}

QString languageFolder() {
    return shippedFolder(QStringLiteral("language"),
                         QStringLiteral(ORVELLE_DATA_FOLDER "/language"));
}

QString manualFolder() {
    return shippedFolder(QStringLiteral("manual"), QStringLiteral(ORVELLE_DOC_FOLDER));
}

}  // namespace orvelle
