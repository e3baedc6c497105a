#include "camera/card/recording_name.h"

#include <QDateTime>

#include <limits>

namespace orvelle {

namespace {

const QString kUnfinished = QStringLiteral(".part");

QString timeFormat() {
    return QStringLiteral("yyyyMMdd'T'HHmmss'Z.mkv'");
}

}  // namespace

QString recordingName(int64_t startSec) {
    return QDateTime::fromSecsSinceEpoch(startSec, Qt::UTC).toString(timeFormat());
}

QString unfinishedName(int64_t startSec) {
    return recordingName(startSec) + kUnfinished;
}

// Written back and compared, so that no file of another origin is ever taken for a recording.
std::optional<RecordingName> readRecordingName(const QString& name) {
    const bool isUnfinished = name.endsWith(kUnfinished);
    const QString finished = isUnfinished ? name.chopped(kUnfinished.size()) : name;
    const QDate date = QDate::fromString(name.left(8), QStringLiteral("yyyyMMdd"));
    const QTime time = QTime::fromString(name.mid(9, 6), QStringLiteral("HHmmss"));
    if (!date.isValid() || !time.isValid())
        return {};
    const int64_t startSec = QDateTime(date, time, Qt::UTC).toSecsSinceEpoch();
    if (startSec < 0 || startSec > std::numeric_limits<uint32_t>::max() ||
        recordingName(startSec) != finished)
        return {};
    return RecordingName{startSec, isUnfinished};
}

}  // namespace orvelle
