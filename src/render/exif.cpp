#include "render/exif.h"

#include <QtEndian>

#include <utility>
#include <vector>

namespace orvelle {

namespace {

enum Tag : quint16 {
    kDateTime = 0x0132,
    kDetails = 0x8769,
    kDateTimeOriginal = 0x9003,
    kDateTimeDigitized = 0x9004,
    kOffsetTimeOriginal = 0x9011,
};
enum Type : quint16 { kText = 2, kLong = 4 };

constexpr char kName[] = "Exif\0";  // with its two NULs
constexpr char kTiffHead[] = "II\x2a\0\x08\0\0";
constexpr int kTiffHeadBytes = 8;
constexpr int kEntryBytes = 12;

template <class Number>
void append(QByteArray& bytes, Number value) {
    char little[sizeof value];
    qToLittleEndian(value, little);
    bytes.append(little, sizeof value);
}

using Texts = std::vector<std::pair<Tag, QByteArray>>;

/// A directory of texts that begins at `offset`, with their bytes behind it; `details`, unless it
/// is 0, is where another directory begins.
QByteArray directory(int offset, const Texts& texts, quint32 details) {
    const int count = static_cast<int>(texts.size()) + (details != 0 ? 1 : 0);
    quint32 dataAt = static_cast<quint32>(offset + 2 + count * kEntryBytes + 4);
    QByteArray bytes, data;
    append<quint16>(bytes, static_cast<quint16>(count));
    for (const auto& [tag, text] : texts) {
        append<quint16>(bytes, tag);
        append<quint16>(bytes, kText);
        append<quint32>(bytes, static_cast<quint32>(text.size() + 1));
        append<quint32>(bytes, dataAt + static_cast<quint32>(data.size()));
        data += text + '\0';
    }
    if (details != 0) {
        append<quint16>(bytes, kDetails);
        append<quint16>(bytes, kLong);
        append<quint32>(bytes, 1);
        append<quint32>(bytes, details);
    }
    append<quint32>(bytes, 0);  // no further directory
    return bytes + data;
}

QByteArray offsetText(int seconds) {
    const int minutes = qAbs(seconds) / 60;
    return QStringLiteral("%1%2:%3")
        .arg(seconds < 0 ? QLatin1Char('-') : QLatin1Char('+'))
        .arg(minutes / 60, 2, 10, QLatin1Char('0'))
        .arg(minutes % 60, 2, 10, QLatin1Char('0'))
        .toLatin1();
}

}  // namespace

QByteArray exifSegment(const QDateTime& takenAt) {
    if (!takenAt.isValid())
        return {};
    const QByteArray time = takenAt.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")).toLatin1();
    const Texts general = {{kDateTime, time}};
    const int detailsAt = kTiffHeadBytes + directory(kTiffHeadBytes, general, 1).size();
    const Texts details = {{kDateTimeOriginal, time},
                           {kDateTimeDigitized, time},
                           {kOffsetTimeOriginal, offsetText(takenAt.offsetFromUtc())}};
    const QByteArray body = QByteArray(kName, sizeof kName) +
                            QByteArray(kTiffHead, sizeof kTiffHead) +
                            directory(kTiffHeadBytes, general, static_cast<quint32>(detailsAt)) +
                            directory(detailsAt, details, 0);
    char size[2];
    qToBigEndian(static_cast<quint16>(body.size() + 2), size);
    return QByteArray("\xff\xe1", 2) + QByteArray(size, 2) + body;
}

}  // namespace orvelle
