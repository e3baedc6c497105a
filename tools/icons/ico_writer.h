#pragma once

#include <QImage>
#include <QString>

#include <vector>

namespace orvelle::icons {

/// Writes the images of one program icon, square and at most 256 pixels, as a Windows icon file.
/// Prints one line when it fails.
bool writeIco(const QString& path, const std::vector<QImage>& images);

}  // namespace orvelle::icons
