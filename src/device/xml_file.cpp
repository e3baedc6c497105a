#include "device/xml_file.h"

#include <QFile>
#include <QXmlStreamReader>

#include <algorithm>

#include "core/wipe.h"
#include "device/logging.h"

namespace orvelle {
namespace {

constexpr qint64 kMaxFileBytes = 1024 * 1024;
constexpr int kMaxDepth = 8;

// Walks the document without building it: a tree of a hundred thousand levels would overflow
// the stack of the recursive DOM, and an encoding error would pass it unnoticed.
QString refusalOf(const QByteArray& bytes) {
    QXmlStreamReader reader(bytes);
    int depth = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
            case QXmlStreamReader::DTD:
                return QStringLiteral("document type declarations are not accepted");
            case QXmlStreamReader::StartElement:
                if (++depth > kMaxDepth)
                    return QStringLiteral("nested too deeply");
                break;
            case QXmlStreamReader::EndElement:
                --depth;
                break;
            default:
                break;
        }
    }
    return reader.hasError() ? reader.errorString() : QString();
}

QString readInto(const QString& path, const QString& documentName, QDomDocument& document) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    QByteArray bytes = file.read(kMaxFileBytes + 1);
    const WipedAtEnd<QByteArray> wiped(bytes);
    if (bytes.size() > kMaxFileBytes)
        return QStringLiteral("larger than %1 bytes").arg(kMaxFileBytes);
    const QString refusal = refusalOf(bytes);
    if (!refusal.isEmpty())
        return refusal;
    document = QDomDocument(documentName);
    QString error;
    return document.setContent(bytes, &error) ? QString() : error;
}

// What XML 1.0 and UTF-8 can hold: one stray half of a character would spoil the whole file.
QString storable(const QString& text) {
    const auto isRefused = [](QChar character) {
        const ushort code = character.unicode();
        return code >= 0xFFFE || (code < 0x20 && code != '\t' && code != '\n' && code != '\r');
    };
    QString clean = text;
    const auto end = std::remove_if(clean.begin(), clean.end(), isRefused);
    clean.truncate(static_cast<int>(end - clean.begin()));
    return QString::fromUtf8(clean.toUtf8());
}

}  // namespace

std::optional<QDomDocument> readXmlFile(const QString& path, const QString& documentName) {
    QDomDocument document;
    const QString refusal = readInto(path, documentName, document);
    if (refusal.isEmpty())
        return document;
    qCWarning(lcDevice) << "skipped" << path << ":" << refusal;
    return std::nullopt;
}

QByteArray xmlDocument(const std::function<void(QXmlStreamWriter&)>& writeBody) {
    QByteArray bytes;
    QXmlStreamWriter writer(&bytes);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(4);
    writer.writeStartDocument();
    writeBody(writer);
    writer.writeEndDocument();
    return bytes;
}

void writeXmlText(QXmlStreamWriter& writer, const QString& tag, const QString& text) {
    writer.writeTextElement(tag, storable(text));
}

void writeXmlNumber(QXmlStreamWriter& writer, const QString& tag, int number) {
    writer.writeTextElement(tag, QString::number(number));
}

}  // namespace orvelle
