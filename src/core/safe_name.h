#pragma once

#include <QString>

namespace orvelle {

/// A text that came from the network as a name that can be shown and kept: one line, without
/// characters that cannot be seen or that turn the reading direction, trimmed and at most
/// `maxCharacters` long. Whoever shows it shows plain text.
QString safeName(const QString& text, int maxCharacters = 64);

}  // namespace orvelle
