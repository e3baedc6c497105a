#pragma once

#include <QStringList>

namespace orvelle {

/// What came of a recording.
struct RecordingResult {
    QStringList files;        ///< the finished ones; empty when nothing was kept
    int error = 0;            ///< the FFmpeg error that ended it early, or 0
    bool lacksSound = false;  ///< the camera's sound is in no file
};

}  // namespace orvelle
