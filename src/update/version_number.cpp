#include "update/version_number.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace orvelle {

namespace {

// Far above any version, and its hundredfold is still an int.
constexpr int kMaxPart = 999'999;

int partOf(const QString& digits) {
    bool isInt = false;
    const int part = digits.toInt(&isInt);
    // Text of digits alone fails for its size only.
    return isInt ? std::min(part, kMaxPart) : (digits.isEmpty() ? 0 : kMaxPart);
}

using Parts = std::array<int, 3>;

Parts partsOf(const QString& version) {
    static const QRegularExpression pattern(
        QStringLiteral("^\\s*([0-9]+)(?:\\.([0-9]+)(?:\\.([0-9]+))?)?"));
    const QRegularExpressionMatch parts = pattern.match(version);
    return {partOf(parts.captured(1)), partOf(parts.captured(2)), partOf(parts.captured(3))};
}

}  // namespace

int versionNumber(const QString& version) {
    const Parts parts = partsOf(version);
    return 100 * parts[0] + 10 * parts[1] + parts[2];
}

bool isNewerVersion(const QString& offered, const QString& running) {
    return versionNumber(offered) > versionNumber(running) && partsOf(offered) > partsOf(running);
}

}  // namespace orvelle
