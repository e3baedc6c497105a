#pragma once

#include <QString>

#include "camera/demo/demo_feed.h"

namespace orvelle {

/// Renders `seconds` of the demo scene and tone to a file as fast as the machine can, pictures
/// without B frames so that a camera passes them through. The picture clock carries each picture's
/// time in microseconds from the start. The file's suffix chooses the container. Empty on
/// success, else one line of reason.
QString writeClip(const QString& fileName, int seconds, const DemoFeedConfig& config);

}  // namespace orvelle
