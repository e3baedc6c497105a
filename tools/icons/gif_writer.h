#pragma once

#include <QImage>
#include <QString>

#include <vector>

namespace orvelle::icons {

/// Writes an endless animation. GIF knows only opaque and clear pixels, so half-clear ones are
/// blended with `matte` first. Colours become grey levels. Prints one line when it fails.
bool writeGreyGif(const QString& path, const std::vector<QImage>& frames, int frameMs,
                  const QColor& matte);

}  // namespace orvelle::icons
