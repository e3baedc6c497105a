#include "core/configure.h"

#include "core/file_utils.h"
#include "platform/private_file.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QVariant>

namespace {

Q_LOGGING_CATEGORY(lcCore, "orvelle.core")

// The file holds a handful of short values. A huge one is damaged, and QSettings would read
// all of it at each use.
constexpr qint64 kMaxFileBytes = 1 << 20;

QString settingsFile() {
    const QString path = KvFileUtils::configurePath() + QStringLiteral("/configure.ini");
    if (QFileInfo(path).size() > kMaxFileBytes) {
        const QString aside = path + QStringLiteral(".damaged");
        QFile::remove(aside);
        QFile::rename(path, aside);
        qCWarning(lcCore, "settings file too large, moved to %s", qUtf8Printable(aside));
    }
    return path;
}

}  // namespace

KvConfigure::KvConfigure(QObject* parent)
    : QObject(parent), m_settings(settingsFile(), QSettings::IniFormat) {
    // What is wrong shows only once all of it is read, which the first object after a change does.
    m_settings.allKeys();
    if (m_settings.status() == QSettings::FormatError)
        qCWarning(lcCore, "damaged settings file %s: what cannot be read has its default",
                  qUtf8Printable(m_settings.fileName()));
}

void KvConfigure::setInt(const QString& key, int value) {
    store(key, value);
}

int KvConfigure::getInt(const QString& key, int defaultValue) const {
    bool isNumber = false;
    // By way of the string: the variant's own conversion cuts what exceeds an int.
    const int value = m_settings.value(key).toString().toInt(&isNumber);
    return isNumber ? value : defaultValue;
}

void KvConfigure::setString(const QString& key, const QString& value) {
    store(key, value);
}

QString KvConfigure::getString(const QString& key, const QString& defaultValue) const {
    const QVariant value = m_settings.value(key);
    return value.isNull() ? defaultValue : value.toString();
}

void KvConfigure::setBool(const QString& key, bool value) {
    store(key, value);
}

bool KvConfigure::getBool(const QString& key, bool defaultValue) const {
    const QVariant value = m_settings.value(key);
    return value.isNull() ? defaultValue : value.toBool();
}

bool KvConfigure::remove(const QString& key) {
    if (!contains(key))
        return false;
    m_settings.remove(key);
    m_settings.sync();
    return true;
}

bool KvConfigure::contains(const QString& key) const {
    return !m_settings.value(key).isNull();
}

void KvConfigure::store(const QString& key, const QVariant& value) {
    // A file that QSettings makes is open to others; one that is there keeps its rights.
    orvelle::makePrivateFile(m_settings.fileName().toStdString());
    m_settings.setValue(key, value);
    m_settings.sync();
    if (m_settings.status() == QSettings::AccessError)
        qCWarning(lcCore, "cannot write settings file %s", qUtf8Printable(m_settings.fileName()));
}
