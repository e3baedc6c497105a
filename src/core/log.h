#pragma once

#include <QString>

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

/// From now on Qt's own messages, and those of our logging categories, go to an open log file of an
/// enabled log as well as to where they went before. Called once, by the main thread.
void logQtMessages();

}  // namespace orvelle
