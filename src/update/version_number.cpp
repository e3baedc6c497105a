#include "update/version_number.h"

#include <QRegularExpression>

#include <algorithm>

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

}  // namespace

int versionNumber(const QString& version) {
    static const QRegularExpression pattern(
        QStringLiteral("^\\s*([0-9]+)(?:\\.([0-9]+)(?:\\.([0-9]+))?)?"));
    const QRegularExpressionMatch parts = pattern.match(version);
    return 100 * partOf(parts.captured(1)) + 10 * partOf(parts.captured(2)) +
           partOf(parts.captured(3));
}

bool isNewerVersion(const QString& offered, const QString& running) {
    return versionNumber(offered) > versionNumber(running);
}

}  // namespace orvelle
