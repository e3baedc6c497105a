#include "core/file_utils.h"

#include "core/configure.h"
#include "platform/open_folder.h"
#include "platform/sync_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <atomic>

namespace {

Q_LOGGING_CATEGORY(lcCore, "orvelle.core")

KvFileUtils* s_instance = nullptr;

QString created(const QString& path) {
    // Folders are asked for at every use: one line says enough about a disk that takes none.
    static std::atomic_flag isTold = ATOMIC_FLAG_INIT;
    if (!KvFileUtils::mkdir(path) && !isTold.test_and_set())
        qCWarning(lcCore, "cannot create folder %s", qUtf8Printable(path));
    return path;
}

}  // namespace

KvFileUtils::KvFileUtils(QObject* parent) : QObject(parent) {
    s_instance = this;
}

KvFileUtils::~KvFileUtils() {
    s_instance = nullptr;
}

KvFileUtils* KvFileUtils::instance() {
    return s_instance;
}

QString KvFileUtils::dataRoot() {
    return created(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation));
}

QString KvFileUtils::cachePath() {
    return created(dataRoot() + QStringLiteral("/cache"));
}

QString KvFileUtils::cachePath(const QString& name) {
    return created(cachePath() + QLatin1Char('/') + name);
}

QString KvFileUtils::configurePath() {
    return created(dataRoot() + QStringLiteral("/configure"));
}

QString KvFileUtils::devicesPath() {
    return created(dataRoot() + QStringLiteral("/Devices"));
}

QString KvFileUtils::devicesPath(const QString& name) {
    return created(devicesPath() + QLatin1Char('/') + name);
}

QString KvFileUtils::updatePath() {
    return created(dataRoot() + QStringLiteral("/Update"));
}

QString KvFileUtils::mediaRoot() {
    const QString root = dataRoot();
    return created(KvConfigure().getString(orvelle::settings::kMediaRoot, root));
}

QString KvFileUtils::mediaPath(const QString& uid) {
    return created(mediaRoot() + QLatin1Char('/') + uid);
}

QString KvFileUtils::screenshotPath(const QString& uid) {
    return created(mediaPath(uid) + QStringLiteral("/Screenshot"));
}

QString KvFileUtils::videoPath(const QString& uid) {
    return created(mediaPath(uid) + QStringLiteral("/Video"));
}

bool KvFileUtils::exists(const QString& path) {
    return QFileInfo(path).isDir();
}

bool KvFileUtils::mkdir(const QString& path) {
    return !path.isEmpty() && QDir().mkpath(path);
}

bool KvFileUtils::fileExists(const QString& path) {
    return !path.isEmpty() && QFileInfo::exists(path);
}

bool KvFileUtils::removeFile(const QString& path) {
    return QFile::remove(path);
}

bool KvFileUtils::resetMediaRoot() {
    return KvConfigure().remove(orvelle::settings::kMediaRoot);
}

bool KvFileUtils::syncFile(const QString& path) {
    return orvelle::syncFile(path.toStdString());
}

bool KvFileUtils::openFolder(const QString& path) {
    return orvelle::openFolder(path.toStdString());
}
