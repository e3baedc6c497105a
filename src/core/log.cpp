#include "core/log.h"

#include "platform/private_file.h"

#include <QDateTime>
#include <QFile>
#include <QtDebug>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

namespace orvelle {
namespace {

constexpr int kMaxLineBytes = 4096;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, CloseFile>;

std::atomic<bool> s_enabled{false};
std::mutex s_mutex;  // guards s_file
FilePtr s_file;

QByteArray stampedLine(const char* format, va_list arguments) {
    QByteArray line =
        QDateTime::currentDateTime().toString(QStringLiteral("[yyyy/MM/dd HH:mm:ss] ")).toLatin1();
    char message[kMaxLineBytes + 1];
    std::vsnprintf(message, sizeof message, format, arguments);
    line.append(message);
    line.truncate(kMaxLineBytes);
    return line;
}

bool writeToFile(const char* format, va_list arguments, QByteArray& line) {
    const std::lock_guard<std::mutex> lock(s_mutex);
    if (!s_file)
        return false;
    line = stampedLine(format, arguments);
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), s_file.get());
    std::fflush(s_file.get());
    return true;
}

}  // namespace

void log(const char* format, [[maybe_unused]] int level, ...) {
    if (!isLogEnabled())
        return;

    va_list arguments;
    va_start(arguments, level);
    va_list forFile;
    va_copy(forFile, arguments);
    QByteArray line;
    // Qt's message handler may log again, so it is called without the lock.
    if (writeToFile(format, forFile, line) && line.size() > 1)
        qDebug("%s", line.constData());
    va_end(forFile);
    std::vprintf(format, arguments);
    va_end(arguments);
}

void setLogEnabled(bool enabled) {
    s_enabled.store(enabled);
}

bool isLogEnabled() {
    return s_enabled.load();
}

bool openLogFile(const QString& path) {
    const std::string name = path.toStdString();
    makePrivateFile(name);
    takeFromOthers(name);
    FilePtr file(std::fopen(QFile::encodeName(path).constData(), "a+"));
    const std::lock_guard<std::mutex> lock(s_mutex);
    s_file = std::move(file);
    return s_file != nullptr;
}

void closeLogFile() {
    const std::lock_guard<std::mutex> lock(s_mutex);
    s_file.reset();
}

}  // namespace orvelle
