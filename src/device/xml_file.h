#pragma once

#include <QByteArray>
#include <QDomDocument>
#include <QString>
#include <QXmlStreamWriter>

#include <functional>
#include <optional>

namespace orvelle {

/// Parses a small XML file. Empty, with one line in the log that says why, when it cannot be
/// read, is larger than 1 MiB, is no well-formed XML, nests deeply or declares entities.
std::optional<QDomDocument> readXmlFile(const QString& path, const QString& documentName);

/// A whole document; `writeBody` writes the root element.
QByteArray xmlDocument(const std::function<void(QXmlStreamWriter&)>& writeBody);

/// One text element, without the characters that XML cannot hold.
void writeXmlText(QXmlStreamWriter& writer, const QString& tag, const QString& text);
void writeXmlNumber(QXmlStreamWriter& writer, const QString& tag, int number);

}  // namespace orvelle
