#include "core/file_utils.h"

#include "core/configure.h"
#include "platform/open_folder.h"
#include "platform/private_file.h"
#include "platform/sync_file.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <atomic>

namespace {

Q_LOGGING_CATEGORY(lcCore, "orvelle.core")

KvFileUtils* s_instance = nullptr;

QString tellUnless(bool isThere, const QString& path) {
    // Folders are asked for at every use: one line says enough about a disk that takes none.
    static std::atomic_flag isTold = ATOMIC_FLAG_INIT;
    if (!isThere && !isTold.test_and_set())
        qCWarning(lcCore, "cannot create folder %s", qUtf8Printable(path));
    return path;
}

/// A folder below the media directory, which is the user's business.
QString created(const QString& path) {
    return tellUnless(KvFileUtils::mkdir(path), path);
}

/// One of the program's own, where passwords and pictures are.
QString createdPrivate(const QString& path) {
    return tellUnless(orvelle::makePrivateFolder(path.toStdString()), path);
}

void takeFromOthers(const QString& path) {
    if (!orvelle::takeFromOthers(path.toStdString()))
        qCWarning(lcCore, "others may read %s", qUtf8Printable(path));
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
    const QString root = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    mkdir(QFileInfo(root).path());
    return createdPrivate(root);
}

QString KvFileUtils::cachePath() {
    return createdPrivate(dataRoot() + QStringLiteral("/cache"));
}

QString KvFileUtils::cachePath(const QString& name) {
    return createdPrivate(cachePath() + QLatin1Char('/') + name);
}

QString KvFileUtils::configurePath() {
    return createdPrivate(dataRoot() + QStringLiteral("/configure"));
}

QString KvFileUtils::devicesPath() {
    return createdPrivate(dataRoot() + QStringLiteral("/Devices"));
}

QString KvFileUtils::devicesPath(const QString& name) {
    return createdPrivate(devicesPath() + QLatin1Char('/') + name);
}

QString KvFileUtils::updatePath() {
    return createdPrivate(dataRoot() + QStringLiteral("/Update"));
}

QString KvFileUtils::mediaRoot() {
    const QString chosen = KvConfigure().getString(orvelle::settings::kMediaRoot, {});
    return created(chosen.isEmpty() ? dataRoot() : chosen);
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

void KvFileUtils::closeToOthers() {
    takeFromOthers(dataRoot());
    for (const QString& folder : {cachePath(), configurePath(), devicesPath(), updatePath()}) {
        if (QFileInfo(folder).isSymLink())
            continue;
        takeFromOthers(folder);
        QDirIterator entries(folder,
                             QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext())
            takeFromOthers(entries.next());
    }
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
