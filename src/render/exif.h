#pragma once

#include <QByteArray>
#include <QDateTime>

namespace orvelle {

/// The segment that tells a JPEG file's readers when its picture was taken, in the time's own zone;
/// it stands right behind the first marker. Empty for an invalid time.
QByteArray exifSegment(const QDateTime& takenAt);

}  // namespace orvelle
