#include "core/configure.h"

#include "core/file_utils.h"
#include "core/file_writer.h"
#include "platform/private_file.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QMap>
#include <QTemporaryDir>
#include <QVariant>

#include <mutex>
#include <utility>

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

/// What this process has set since there is a writer; an invalid value stands for none.
struct SetValues {
    std::mutex mutex;  ///< guards what follows
    orvelle::FileWriter* writer = nullptr;
    QMap<QString, QVariant> values;
};

SetValues& setValues() {
    static SetValues values;
    return values;
}

bool writeTo(QSettings& file, const QMap<QString, QVariant>& values) {
    for (auto value = values.begin(); value != values.end(); ++value) {
        if (value->isValid())
            file.setValue(value.key(), *value);
        else
            file.remove(value.key());
    }
    file.sync();
    if (file.status() != QSettings::AccessError)
        return true;
    qCWarning(lcCore, "cannot write settings file %s", qUtf8Printable(file.fileName()));
    return false;
}

/// On the writer's thread: the file as it is with all that was set. It is made aside, since objects
/// of one file share a lock, which the one that writes holds until the disk is done.
bool writeSetValues() {
    QMap<QString, QVariant> values;
    {
        const std::lock_guard<std::mutex> lock(setValues().mutex);
        values = setValues().values;
    }
    const QString path = settingsFile();
    const QTemporaryDir aside(path + QStringLiteral(".XXXXXX"));
    const QString copy = aside.filePath(QStringLiteral("configure.ini"));
    if (!aside.isValid() || (QFile::exists(path) && !QFile::copy(path, copy))) {
        qCWarning(lcCore, "cannot write settings file %s", qUtf8Printable(path));
        return false;
    }
    QSettings file(copy, QSettings::IniFormat);
    QFile whole(copy);
    return writeTo(file, values) && whole.open(QIODevice::ReadOnly) &&
           orvelle::writePrivateFile(path, whole.readAll());
}

}  // namespace

void KvConfigure::setWriter(orvelle::FileWriter* writer) {
    SetValues& set = setValues();
    orvelle::FileWriter* former = nullptr;
    {
        const std::lock_guard<std::mutex> lock(set.mutex);
        former = std::exchange(set.writer, writer);
    }
    if (former)
        former->finish();
    const std::lock_guard<std::mutex> lock(set.mutex);
    set.values.clear();
}

KvConfigure::KvConfigure(QObject* parent)
    : QObject(parent), m_settings(settingsFile(), QSettings::IniFormat) {
    // What is wrong shows only once all of it is read, which the first object after a change does.
    m_settings.allKeys();
    if (m_settings.status() == QSettings::FormatError)
        qCWarning(lcCore, "damaged settings file %s: what cannot be read has its default",
                  qUtf8Printable(m_settings.fileName()));
}

bool KvConfigure::setInt(const QString& key, int value) {
    return store(key, value);
}

int KvConfigure::getInt(const QString& key, int defaultValue) const {
    bool isNumber = false;
    // By way of the string: the variant's own conversion cuts what exceeds an int.
    const int number = value(key).toString().toInt(&isNumber);
    return isNumber ? number : defaultValue;
}

bool KvConfigure::setString(const QString& key, const QString& value) {
    // As the file gives it back: a text that is empty is there all the same.
    return store(key, value.isNull() ? QString::fromLatin1("") : value);
}

QString KvConfigure::getString(const QString& key, const QString& defaultValue) const {
    const QVariant found = value(key);
    return found.isNull() ? defaultValue : found.toString();
}

bool KvConfigure::setBool(const QString& key, bool value) {
    return store(key, value);
}

bool KvConfigure::getBool(const QString& key, bool defaultValue) const {
    const QVariant found = value(key);
    return found.isNull() ? defaultValue : found.toBool();
}

bool KvConfigure::remove(const QString& key) {
    const bool wasThere = contains(key);
    if (wasThere)
        store(key, QVariant());
    return wasThere;
}

bool KvConfigure::contains(const QString& key) const {
    return !value(key).isNull();
}

QVariant KvConfigure::value(const QString& key) const {
    {
        const std::lock_guard<std::mutex> lock(setValues().mutex);
        const auto found = setValues().values.constFind(key);
        if (found != setValues().values.constEnd())
            return *found;
    }
    return m_settings.value(key);
}

bool KvConfigure::store(const QString& key, const QVariant& value) {
    SetValues& set = setValues();
    const std::lock_guard<std::mutex> lock(set.mutex);
    if (set.writer) {
        set.values.insert(key, value);
        set.writer->run(m_settings.fileName(), &writeSetValues);
        return true;
    }
    set.values.remove(key);
    // A file that QSettings makes is open to others; one that is there keeps its rights.
    orvelle::makePrivateFile(m_settings.fileName().toStdString());
    return writeTo(m_settings, {{key, value}});
}
