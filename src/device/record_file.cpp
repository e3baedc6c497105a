#include "device/record_file.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <mutex>

#include "core/file_utils.h"
#include "core/file_writer.h"
#include "device/logging.h"

namespace orvelle {

/// Where the record stands and where it stood before.
struct RecordFile::Paths {
    mutable std::mutex mutex;  ///< guards what follows
    FileWriter* writer = nullptr;
    QString current;      ///< empty: the record has no file yet
    QStringList formers;  ///< go as soon as the current one is there

    void moveTo(const QString& path) {
        const std::lock_guard<std::mutex> lock(mutex);
        if (!current.isEmpty() && current != path)
            formers.append(current);
        formers.removeAll(path);
        // In place of an assignment, within which the thread sanitizer sees no order.
        QString(path).swap(current);
    }
    void removeFormers() {
        const std::lock_guard<std::mutex> lock(mutex);
        for (const QString& path : qAsConst(formers))
            QFile::remove(path);
        formers.clear();
    }
};

RecordFile::RecordFile(const QString& kind) : m_kind(kind), m_paths(std::make_shared<Paths>()) {}

void RecordFile::setWriter(FileWriter* writer) {
    const std::lock_guard<std::mutex> lock(m_paths->mutex);
    m_paths->writer = writer;
}

void RecordFile::setFound(const QString& path) {
    const std::lock_guard<std::mutex> lock(m_paths->mutex);
    m_paths->current = path;
}

QString RecordFile::pathOf(const QString& name) const {
    return KvFileUtils::devicesPath(m_kind) + QLatin1Char('/') + name + QStringLiteral(".xml");
}

bool RecordFile::isNamed(const QString& name) const {
    const std::lock_guard<std::mutex> lock(m_paths->mutex);
    return !m_paths->current.isEmpty() && m_paths->current == pathOf(name);
}

bool RecordFile::write(const QString& name, const QByteArray& bytes) {
    const QString path = pathOf(name);
    FileWriter* writer = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_paths->mutex);
        writer = m_paths->writer;
    }
    if (writer)
        writer->forget(path);
    if (!writePrivateFile(path, bytes))
        return false;
    m_paths->moveTo(path);
    m_paths->removeFormers();
    return true;
}

bool RecordFile::writeLater(const QString& name, const QByteArray& bytes) {
    const QString path = pathOf(name);
    FileWriter* writer = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_paths->mutex);
        writer = m_paths->writer;
    }
    if (!writer)
        return write(name, bytes);
    m_paths->moveTo(path);
    writer->write(path, bytes, [paths = m_paths] { paths->removeFormers(); });
    return true;
}

bool RecordFile::remove(const QString& name) {
    QStringList all;
    FileWriter* writer = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_paths->mutex);
        writer = m_paths->writer;
        all = m_paths->formers;
        all.append(m_paths->current);
    }
    if (!name.isEmpty())
        all.append(pathOf(name));
    bool isGone = true;
    for (const QString& path : qAsConst(all)) {
        if (path.isEmpty())
            continue;
        if (writer)
            writer->forget(path);
        isGone = (QFile::remove(path) || !QFile::exists(path)) && isGone;
    }
    const std::lock_guard<std::mutex> lock(m_paths->mutex);
    m_paths->formers.clear();
    m_paths->current.clear();
    return isGone;
}

bool RecordFile::isOlderThan(const RecordFile& other) const {
    const auto lastModified = [](const RecordFile& file) {
        const std::lock_guard<std::mutex> lock(file.m_paths->mutex);
        return QFileInfo(file.m_paths->current).lastModified();
    };
    return lastModified(*this) < lastModified(other);
}

void RecordFile::setAside() {
    const std::lock_guard<std::mutex> lock(m_paths->mutex);
    const QString path = m_paths->current;
    QString aside = path + QStringLiteral(".old");
    for (int i = 2; QFile::exists(aside); ++i)
        aside = path + QStringLiteral(".old%1").arg(i);
    const bool isAside = QFile::rename(path, aside);
    qCWarning(lcDevice) << "a second file of the same record, not the newest:" << path
                        << (isAside ? "is now" : "cannot be renamed to") << aside;
}

}  // namespace orvelle
