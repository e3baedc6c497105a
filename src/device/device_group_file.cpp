#include "device/device_group.h"

#include <QDebug>
#include <QDir>
#include <QFile>

#include <utility>

#include "core/file_utils.h"
#include "device/device_ids.h"
#include "device/device_manager.h"
#include "device/logging.h"
#include "device/tutk_device.h"
#include "device/xml_file.h"

namespace {

constexpr int kLastLayout = 6;
constexpr int kAllTilesLayout = 5;

QString filePath(const QString& key) {
    return KvFileUtils::devicesPath(QStringLiteral("KvTUTKGroup")) + QLatin1Char('/') + key +
           QStringLiteral(".xml");
}

// UIDs name directories, so those that could lead elsewhere are left out.
QStringList usableUids(const QDomElement& list) {
    QStringList uids;
    int skipped = 0;
    const QString tag = QStringLiteral("uid");
    for (QDomElement element = list.firstChildElement(tag); !element.isNull();
         element = element.nextSiblingElement(tag)) {
        const QString uid = element.text();
        if (uids.size() < KvDeviceGroup::kMaxMembers && KvTUTKDevice::isUsableUid(uid) &&
            !uids.contains(uid))
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

std::vector<std::unique_ptr<KvDeviceGroup>> KvDeviceGroup::loadAll(const QString& directory) {
    std::vector<std::unique_ptr<KvDeviceGroup>> groups;
    const QFileInfoList files = QDir(directory).entryInfoList(
        {QStringLiteral("*.xml")}, QDir::Files | QDir::Readable, QDir::Name);
    for (const QFileInfo& file : files) {
        auto group = std::make_unique<KvDeviceGroup>();
        if (!group->readFromFile(file.filePath()))
            continue;
        const char* refusal = group->refusal();
        if (!refusal)
            groups.push_back(std::move(group));
        else
            qCWarning(lcDevice) << "skipped" << file.filePath() << ":" << refusal;
    }
    return groups;
}

const char* KvDeviceGroup::refusal() const {
    const Record entry = record();
    if (entry.name.isEmpty())
        return "no name";
    if (entry.type != kSingleCamera && entry.type != kGroup)
        return "unknown type";
    if (entry.type == kSingleCamera && entry.uids.size() != 1)
        return "a camera's entry without its one usable UID";
    return nullptr;
}

QString KvDeviceGroup::key() const {
    return keyOf(record());
}

QString KvDeviceGroup::keyOf(const Record& record) {
    if (record.type == kGroup)
        return QString::number(record.groupId);
    const QString uid = record.uids.value(0);
    return KvTUTKDevice::isUsableUid(uid) ? uid : QString();
}

bool KvDeviceGroup::save() {
    ensureGroupId();
    const Record current = record();
    const QString key = keyOf(current);
    if (key.isEmpty())
        return false;
    KvDeviceManager::cancelWrites(filePath(key));
    if (!orvelle::writePrivateFile(filePath(key), toXml(current)))
        return false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    const QString former = std::exchange(m_file, filePath(key));
    // A file that was not named after its entry would be loaded beside the new one.
    if (!former.isEmpty() && former != m_file)
        QFile::remove(former);
    return true;
}

bool KvDeviceGroup::saveLater() {
    ensureGroupId();
    const Record current = record();
    const QString key = keyOf(current);
    if (key.isEmpty())
        return false;
    const QString path = filePath(key);
    bool hasOtherFile = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_file.isEmpty())
            m_file = path;
        hasOtherFile = m_file != path;
    }
    // A file of another name goes once the new one is there, which takes waiting.
    return hasOtherFile ? save() : KvDeviceManager::writeLater(path, toXml(current));
}

bool KvDeviceGroup::hasOwnFile() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return !m_file.isEmpty() && m_file == filePath(keyOf(m_record));
}

void KvDeviceGroup::ensureGroupId() {
    const Record current = record();
    if (current.type == kSingleCamera || current.groupId >= 1)
        return;
    const int id = orvelle::idAfter(KvDeviceManager::getMaxGroupId());
    KvDeviceManager::setMaxGroupId(id);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_record.groupId = id;
}

QByteArray KvDeviceGroup::toXml(const Record& record) {
    return orvelle::xmlDocument([&record](QXmlStreamWriter& writer) {
        writer.writeStartElement(QStringLiteral("KvDeviceGroup"));
        orvelle::writeXmlNumber(writer, QStringLiteral("groupId"), record.groupId);
        orvelle::writeXmlNumber(writer, QStringLiteral("type"), record.type);
        orvelle::writeXmlNumber(writer, QStringLiteral("layout"), record.layout);
        orvelle::writeXmlNumber(writer, QStringLiteral("groupIndex"), record.groupIndex);
        orvelle::writeXmlText(writer, QStringLiteral("name"), record.name);
        writer.writeStartElement(QStringLiteral("uids"));
        writer.writeAttribute(QStringLiteral("count"), QString::number(record.uids.size()));
        for (const QString& uid : record.uids)
            orvelle::writeXmlText(writer, QStringLiteral("uid"), uid);
        writer.writeEndElement();
        writer.writeEndElement();
    });
}

bool KvDeviceGroup::removeFile() {
    const QString key = this->key();
    if (!key.isEmpty())
        KvDeviceManager::cancelWrites(filePath(key));
    const std::lock_guard<std::mutex> lock(m_mutex);
    bool isGone = true;
    for (const QString& path : {key.isEmpty() ? QString() : filePath(key), m_file}) {
        if (!path.isEmpty())
            isGone = (QFile::remove(path) || !QFile::exists(path)) && isGone;
    }
    m_file.clear();
    return isGone;
}

bool KvDeviceGroup::readFromFile(const QString& path) {
    const auto document = orvelle::readXmlFile(path, QStringLiteral("KvDeviceGroup"));
    if (!document)
        return false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (QDomElement element = document->documentElement().firstChildElement(); !element.isNull();
         element = element.nextSiblingElement())
        readElement(element, m_record);
    m_file = path;
    return true;
}

void KvDeviceGroup::readElement(const QDomElement& element, Record& record) {
    const QString tag = element.tagName();
    const QString text = element.text();
    if (tag == QLatin1String("uids"))
        record.uids = usableUids(element);
    else if (tag == QLatin1String("name"))
        record.name = text;
    else if (tag == QLatin1String("type"))
        record.type = text.toInt();
    else if (tag == QLatin1String("layout"))
        record.layout = text.toInt();
    else if (tag == QLatin1String("groupIndex"))
        record.groupIndex = text.toInt();
    else if (tag == QLatin1String("groupId"))
        record.groupId = text.toInt();
    if (record.layout < 0 || record.layout > kLastLayout) {
        qCWarning(lcDevice) << "a list entry has no known layout:" << record.layout;
        record.layout = kAllTilesLayout;
    }
}
