#include "device/group_record.h"

#include "device/camera_record.h"
#include "device/logging.h"
#include "device/xml_file.h"

namespace orvelle {

namespace {

constexpr int kLastLayout = 6;
constexpr int kAllTilesLayout = 5;

// UIDs name directories, so those that could lead elsewhere are left out.
QStringList usableUids(const QDomElement& list) {
    QStringList uids;
    int skipped = 0;
    const QString tag = QStringLiteral("uid");
    for (QDomElement element = list.firstChildElement(tag); !element.isNull();
         element = element.nextSiblingElement(tag)) {
        const QString uid = element.text();
        if (uids.size() < GroupRecord::kMaxMembers && isUsableUid(uid) && !uids.contains(uid))
            uids.append(uid);
        else
            ++skipped;
    }
    if (skipped > 0)
        qCWarning(lcDevice) << "skipped" << skipped
                            << "members of a list entry: unusable, double or too many";
    return uids;
}

}  // namespace

QString GroupRecord::key() const {
    if (type == kGroup)
        return groupId < 1 ? QString() : QString::number(groupId);
    const QString uid = uids.value(0);
    return isUsableUid(uid) ? uid : QString();
}

QByteArray GroupRecord::toXml() const {
    return xmlDocument([this](QXmlStreamWriter& writer) {
        writer.writeStartElement(QStringLiteral("KvDeviceGroup"));
        writeXmlNumber(writer, QStringLiteral("groupId"), groupId);
        writeXmlNumber(writer, QStringLiteral("type"), type);
        writeXmlNumber(writer, QStringLiteral("layout"), layout);
        writeXmlNumber(writer, QStringLiteral("groupIndex"), groupIndex);
        writeXmlText(writer, QStringLiteral("name"), name);
        writer.writeStartElement(QStringLiteral("uids"));
        writer.writeAttribute(QStringLiteral("count"), QString::number(uids.size()));
        for (const QString& uid : uids)
            writeXmlText(writer, QStringLiteral("uid"), uid);
        writer.writeEndElement();
        writer.writeEndElement();
    });
}

bool GroupRecord::read(const QString& path) {
    const auto document = readXmlFile(path, QStringLiteral("KvDeviceGroup"));
    if (!document)
        return false;
    for (QDomElement element = document->documentElement().firstChildElement(); !element.isNull();
         element = element.nextSiblingElement())
        readElement(element);
    const char* const why = refusal();
    if (why)
        qCWarning(lcDevice) << "skipped" << path << ":" << why;
    return !why;
}

void GroupRecord::readElement(const QDomElement& element) {
    const QString tag = element.tagName();
    const QString text = element.text();
    if (tag == QLatin1String("uids"))
        uids = usableUids(element);
    else if (tag == QLatin1String("name"))
        name = text;
    else if (tag == QLatin1String("type"))
        type = text.toInt();
    else if (tag == QLatin1String("layout"))
        layout = text.toInt();
    else if (tag == QLatin1String("groupIndex"))
        groupIndex = text.toInt();
    else if (tag == QLatin1String("groupId"))
        groupId = text.toInt();
    if (layout < 0 || layout > kLastLayout) {
        qCWarning(lcDevice) << "a list entry has no known layout:" << layout;
        layout = kAllTilesLayout;
    }
}

const char* GroupRecord::refusal() const {
    if (name.isEmpty())
        return "no name";
    if (type != kSingleCamera && type != kGroup)
        return "unknown type";
    if (type == kSingleCamera && uids.size() != 1)
        return "a camera's entry without its one usable UID";
    return nullptr;
}

}  // namespace orvelle
