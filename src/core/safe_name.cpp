#include "core/safe_name.h"

#include <QChar>
#include <QVector>

namespace orvelle {

namespace {

bool isShown(uint character) {
    switch (QChar::category(character)) {
        case QChar::Other_Control:
        case QChar::Other_Format:  // the marks of direction are here
        case QChar::Other_PrivateUse:
        case QChar::Other_NotAssigned:
            return false;
        default:
            return true;
    }
}

bool isBlank(uint character) {
    // Line breaks are control characters besides.
    return (character >= '\t' && character <= '\r') || QChar::isSpace(character);
}

}  // namespace

QString safeName(const QString& text, int maxCharacters) {
    QVector<uint> kept;
    bool isBlankDue = false;
    const QVector<uint> characters = text.toUcs4();
    for (const uint character : characters) {
        if (isBlank(character)) {
            isBlankDue = !kept.isEmpty();
            continue;
        }
        if (!isShown(character))
            continue;
        if (kept.size() + (isBlankDue ? 2 : 1) > maxCharacters)
            break;
        if (isBlankDue)
            kept.append(' ');
        isBlankDue = false;
        kept.append(character);
    }
    return QString::fromUcs4(kept.constData(), kept.size());
}

}  // namespace orvelle
