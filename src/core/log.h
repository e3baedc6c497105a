#pragma once

#include <QLoggingCategory>
#include <QString>

/// Qt's own "default", for debug lines that come by the packet or the picture: qCDebug() does not
/// even format one that is not wanted, as qDebug() does.
Q_DECLARE_LOGGING_CATEGORY(lcDebug)

namespace orvelle {

constexpr int kLogError = 3;
constexpr int kLogInfo = 6;

/// The program's own debug log, off until setLogEnabled(true). Any thread.
///
/// An enabled line goes to standard output as it is and, while a log file is open, with a local
/// time stamp to that file and to Qt's debug output, cut at 4096 bytes. `format` is printf's and
/// ends in a line feed; `level` (kLogError, kLogInfo) does not change the output.
[[gnu::format(printf, 1, 3)]] void log(const char* format, int level, ...);

void setLogEnabled(bool enabled);
bool isLogEnabled();

/// Closes an open log file and appends to `path`, a file closed to other users, from now on; false
/// when it cannot be opened.
bool openLogFile(const QString& path);
void closeLogFile();

/// From now on Qt's messages, those of our categories and debug lines go to an open log file of an
/// enabled log as well as to where they went before. Main thread; once it is done, nothing is done.
void logQtMessages();

/// Whether debug lines are made at all. The environment's QT_LOGGING_RULES have the last word.
void setDebugLines(bool areWanted);

/// Everything, debug lines as well, from now on into the file at `path`; false when it cannot be
/// written. Main thread, as the next one.
bool startLog(const QString& path);
/// The end of that. Debug lines stop unless they were wanted before.
void stopLog();

}  // namespace orvelle
