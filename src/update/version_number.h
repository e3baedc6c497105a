#pragma once

#include <QString>

namespace orvelle {

/// A version such as "1.1.6" as a number: 100, 10 and 1 times its parts. What is missing, is no
/// number or comes after the third part counts as 0.
int versionNumber(const QString& version);

/// Whether a version that is offered is newer than the one that runs: its number is higher and so
/// is the first part that differs. "1.0.20" is not newer than "1.1.6", whatever its number.
bool isNewerVersion(const QString& offered, const QString& running);

}  // namespace orvelle
