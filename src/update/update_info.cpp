#include "update/update_info.h"

#include <QXmlStreamReader>
#include <QtDebug>

#include "core/language.h"
#include "update/update_log.h"
#include "update/version_number.h"
#include "update/web_request.h"

namespace {

constexpr int kSha256Bytes = 32;

QString key(const char* name) {
    return QLatin1String(name);
}

QString withLineBreaks(QString notes) {
    return notes.replace(QLatin1String("\\r"), QLatin1String("\r"))
        .replace(QLatin1String("\\n"), QLatin1String("\n"));
}

bool isNotes(const QString& name) {
    return name == QLatin1String("description") || name == QLatin1String("description_ch") ||
           name == QLatin1String("description_en");
}

QMap<QString, QString> entriesOf(QXmlStreamReader& xml) {
    QMap<QString, QString> entries;
    xml.readNextStartElement();
    while (xml.readNextStartElement()) {
        const QString name = xml.name().toString();
        const QString text = xml.readElementText(QXmlStreamReader::SkipChildElements);
        entries.insert(name, isNotes(name) ? withLineBreaks(text) : text);
    }
    // Garbage after the root spoils the file as well.
    while (!xml.atEnd())
        xml.readNext();
    return entries;
}

}  // namespace

KvUpdateInfo::KvUpdateInfo(QObject* parent) : QObject(parent) {}

bool KvUpdateInfo::read(const QByteArray& xml) {
    m_values.clear();
    QXmlStreamReader reader(xml);
    const QMap<QString, QString> entries = entriesOf(reader);
    if (reader.hasError()) {
        qCInfo(lcUpdate) << "update file refused, line" << reader.lineNumber() << ":"
                         << reader.errorString();
        return false;
    }
    for (auto entry = entries.begin(); entry != entries.end(); ++entry)
        setValue(entry.value(), entry.key());
    return !m_values.isEmpty();
}

void KvUpdateInfo::setValue(const QString& value, const QString& key) {
    qDebug() << "setValue :" << value << ", forKey :" << key;
    m_values.insert(key, value);
}

QString KvUpdateInfo::value(const QString& key) const {
    return m_values.value(key);
}

int KvUpdateInfo::versionNumber() const {
    return orvelle::versionNumber(value(key("version")));
}

QString KvUpdateInfo::notes() const {
    const bool isChinese = KvLanguage::getLanguage() == QLatin1String("chinese");
    const QString own = value(isChinese ? key("description_ch") : key("description_en"));
    return own.isEmpty() ? value(key("description")) : own;
}

QUrl KvUpdateInfo::address() const {
    const QUrl address(value(key("path")).trimmed());
    return orvelle::isSafeAddress(address) ? address : QUrl();
}

QByteArray KvUpdateInfo::sha256() const {
    const QString given = value(key("sha256")).trimmed();
    const QByteArray sum = QByteArray::fromHex(given.toLatin1());
    // Decoding skips what is no digit, so the text must come back as it was.
    const bool isSum = sum.size() == kSha256Bytes && QLatin1String(sum.toHex()) == given.toLower();
    return isSum ? sum : QByteArray();
}
