#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace orvelle {

constexpr int kRecordingSec = 60;  ///< what one recording stands for

/// "20261125T020837Z.mkv": the moment in UTC, in seconds since 1970.
QString recordingName(int64_t startSec);
/// The same while it is being written: recordingName() and ".part".
QString unfinishedName(int64_t startSec);

/// Reads either kind of name; nothing for any other.
struct RecordingName {
    int64_t startSec = 0;
    bool isUnfinished = false;
};
std::optional<RecordingName> readRecordingName(const QString& name);

}  // namespace orvelle
