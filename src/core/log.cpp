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

Q_LOGGING_CATEGORY(lcDebug, "default")

namespace orvelle {
namespace {

constexpr int kMaxLineBytes = 4096;

std::atomic<bool> s_enabled{false};
std::mutex s_mutex;  // guards s_file
std::unique_ptr<QFile> s_file;
std::atomic<QtMessageHandler> s_formerHandler{nullptr};
bool s_areDebugLinesWanted = true;     // main thread
thread_local bool t_isEchoed = false;  // log() hands a line on that it has written

QByteArray stampedLine(const QByteArray& message) {
    QByteArray line =
        QDateTime::currentDateTime().toString(QStringLiteral("[yyyy/MM/dd HH:mm:ss] ")).toLatin1();
    line.append(message);
    line.truncate(kMaxLineBytes);
    return line;
}

QByteArray formatted(const char* format, va_list arguments) {
    char message[kMaxLineBytes + 1];
    std::vsnprintf(message, sizeof message, format, arguments);
    return message;
}

/// What was written; empty where no file is open.
QByteArray writeToFile(const QByteArray& message) {
    const std::lock_guard<std::mutex> lock(s_mutex);
    if (!s_file)
        return {};
    const QByteArray line = stampedLine(message);
    s_file->write(line);
    return line;
}

/// A filter rather than the categories' own switches, which would come before the environment's.
void applyDebugLines(bool areWanted) {
    QLoggingCategory::setFilterRules(areWanted ? QString() : QStringLiteral("*.debug=false"));
}

void handleQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (!t_isEchoed && isLogEnabled())
        writeToFile(qFormatLogMessage(type, context, text).toUtf8() + '\n');
    if (const QtMessageHandler former = s_formerHandler)
        former(type, context, text);
}

}  // namespace

void log(const char* format, [[maybe_unused]] int level, ...) {
    if (!isLogEnabled())
        return;

    va_list arguments;
    va_start(arguments, level);
    va_list forFile;
    va_copy(forFile, arguments);
    // Qt's message handler may log again, so it is called without the lock.
    const QByteArray line = writeToFile(formatted(format, forFile));
    if (line.size() > 1) {
        t_isEchoed = true;
        qDebug("%s", line.constData());
        t_isEchoed = false;
    }
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
    auto file = std::make_unique<QFile>(path);
    const bool isOpen =
        file->open(QIODevice::ReadWrite | QIODevice::Append | QIODevice::Unbuffered);
    const std::lock_guard<std::mutex> lock(s_mutex);
    s_file = isOpen ? std::move(file) : nullptr;
    return isOpen;
}

void closeLogFile() {
    const std::lock_guard<std::mutex> lock(s_mutex);
    s_file.reset();
}

void logQtMessages() {
    const QtMessageHandler former = qInstallMessageHandler(&handleQtMessage);
    if (former != &handleQtMessage)
        s_formerHandler = former;
}

void setDebugLines(bool areWanted) {
    s_areDebugLinesWanted = areWanted;
    applyDebugLines(areWanted);
}

bool startLog(const QString& path) {
    if (!openLogFile(path))
        return false;
    setLogEnabled(true);
    applyDebugLines(true);
    logQtMessages();
    return true;
}

void stopLog() {
    setLogEnabled(false);
    closeLogFile();
    applyDebugLines(s_areDebugLinesWanted);
}

}  // namespace orvelle
