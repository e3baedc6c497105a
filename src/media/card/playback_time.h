#pragma once

#include <QDateTime>

namespace orvelle {

/// The calendar time by which a camera finds what it recorded at the instant `start`, whatever
/// zone this computer is in. `baseMinute` is the camera's offset from UTC as it told it.
QDateTime recordingTime(const QDateTime& start, int32_t baseMinute);

}  // namespace orvelle
