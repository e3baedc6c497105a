#pragma once

#include <QStringList>

namespace orvelle {

/// What ended a recording early.
enum class RecordingFault { kNone, kDiskFull, kQuota, kFileTooLarge, kDiskTooSlow, kOther };

/// What came of a recording.
struct RecordingResult {
    QStringList files;  ///< the finished ones; empty when nothing was kept
    RecordingFault fault = RecordingFault::kNone;
    bool lacksSound = false;  ///< the camera's sound is in no file
};

}  // namespace orvelle
