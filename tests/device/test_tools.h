#pragma once

#include <QDateTime>
#include <QFile>

#include <mutex>

#include "core/file_utils.h"
#include "support/full_disk.h"

namespace orvelle::test {

/// Collects Qt's log while it lives, instead of printing it.
class LogLines {
public:
    ~LogLines() {
        qInstallMessageHandler(m_previous);
        take();
    }
    QStringList take() {
        const std::lock_guard<std::mutex> lock(s_mutex);
        return std::exchange(s_lines, {});
    }

    /// Whether a line with these words has come; leaves all of them.
    bool contains(const char* words) const {
        const std::lock_guard<std::mutex> lock(s_mutex);
        return !s_lines.filter(QLatin1String(words)).isEmpty();
    }

private:
    static void handle(QtMsgType, const QMessageLogContext&, const QString& line) {
        const std::lock_guard<std::mutex> lock(s_mutex);
        s_lines.append(line);
    }

    inline static std::mutex s_mutex;  ///< guards s_lines
    inline static QStringList s_lines;
    const QtMessageHandler m_previous = qInstallMessageHandler(&LogLines::handle);
};

/// Attempts to reach these cameras last until they are aborted, as nobody listens where they are
/// said to be. Undone by unsetting ORVELLE_LINK_UNBOUNDED and ORVELLE_CAMERA_ADDRESSES.
inline void hangAttemptsOn(const QStringList& uids) {
    QStringList addresses;
    for (const QString& uid : uids)
        addresses << uid + QStringLiteral("=127.0.0.1:9");
    qputenv("ORVELLE_LINK_UNBOUNDED", "1");
    qputenv("ORVELLE_CAMERA_ADDRESSES", addresses.join(QLatin1Char(',')).toLatin1());
}

/// The XML files of one kind, "KvTUTK" or "KvTUTKGroup".
struct XmlFiles {
    const QString kind;

    QString directory() const { return KvFileUtils::devicesPath(kind); }
    QString path(const char* name) const {
        return directory() + QLatin1Char('/') + QLatin1String(name) + QStringLiteral(".xml");
    }
    bool has(const char* name) const { return QFile::exists(path(name)); }
    QByteArray read(const char* name) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// As if it had been written that long ago.
    bool age(const char* name, int seconds) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadWrite) &&
               file.setFileTime(QDateTime::currentDateTime().addSecs(-seconds),
                                QFileDevice::FileModificationTime);
    }
    void write(const char* name, const QByteArray& content) const {
        QFile file(path(name));
        file.open(QIODevice::WriteOnly);
        file.write(content);
    }
};

}  // namespace orvelle::test
