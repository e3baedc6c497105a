#include <QDebug>
#include <QDir>
#include <QFile>

#include <cmath>

#include "core/configure.h"
#include "core/file_utils.h"
#include "core/wipe.h"
#include "device/device_ids.h"
#include "device/device_manager.h"
#include "device/logging.h"
#include "device/tutk_device.h"
#include "device/xml_file.h"

namespace {

QString filePath(const QString& uid) {
    return KvFileUtils::devicesPath(QStringLiteral("KvTUTK")) + QLatin1Char('/') + uid +
           QStringLiteral(".xml");
}

double toVolume(const QString& text) {
    const double volume = text.toDouble();
    return std::isfinite(volume) ? volume : 0.0;
}

}  // namespace

std::vector<std::unique_ptr<KvTUTKDevice>> KvTUTKDevice::loadAll(const QString& directory) {
    std::vector<std::unique_ptr<KvTUTKDevice>> devices;
    const QFileInfoList files = QDir(directory).entryInfoList(
        {QStringLiteral("*.xml")}, QDir::Files | QDir::Readable, QDir::Name);
    for (const QFileInfo& file : files) {
        auto device = std::make_unique<KvTUTKDevice>();
        if (device->readFromFile(file.filePath()) != 0)
            continue;
        // The UID names files and directories, so nothing else may stand in it.
        if (isUsableUid(device->uid()))
            devices.push_back(std::move(device));
        else
            qCWarning(lcDevice) << "skipped" << file.filePath() << ": no usable UID";
    }
    return devices;
}

void KvTUTKDevice::ensureDeviceId() {
    if (m_deviceId >= 0)
        return;
    KvConfigure settings;
    m_deviceId = orvelle::idAfter(settings.getInt(orvelle::settings::kDeviceMaxId, 0));
    settings.setInt(orvelle::settings::kDeviceMaxId, m_deviceId);
}

int KvTUTKDevice::save() {
    if (!isUsableUid(m_uid))
        return 0;
    ensureDeviceId();
    KvDeviceManager::cancelWrites(filePath(m_uid));
    return writeToFile(filePath(m_uid));
}

int KvTUTKDevice::saveLater() {
    if (!isUsableUid(m_uid))
        return 0;
    ensureDeviceId();
    return KvDeviceManager::writeLater(filePath(m_uid), toXml());
}

bool KvTUTKDevice::removeFile() {
    if (!isUsableUid(m_uid))
        return false;
    const QString path = filePath(m_uid);
    KvDeviceManager::cancelWrites(path);
    return QFile::remove(path) || !QFile::exists(path);
}

bool KvTUTKDevice::writeToFile(const QString& path) const {
    qDebug().noquote() << "KvTUTKDevice writeToFile" << path;
    QByteArray bytes = toXml();
    const orvelle::WipedAtEnd<QByteArray> wiped(bytes);
    return orvelle::writePrivateFile(path, bytes);
}

QByteArray KvTUTKDevice::toXml() const {
    return orvelle::xmlDocument([this](QXmlStreamWriter& writer) {
        writer.writeStartElement(QStringLiteral("KvTUTKDevice"));
        orvelle::writeXmlNumber(writer, QStringLiteral("deviceId"), m_deviceId);
        orvelle::writeXmlText(writer, QStringLiteral("name"), m_name);
        orvelle::writeXmlText(writer, QStringLiteral("ip"), m_ip);
        orvelle::writeXmlText(writer, QStringLiteral("uid"), m_uid);
        orvelle::writeXmlText(writer, QStringLiteral("password"), password());
        orvelle::writeXmlNumber(writer, QStringLiteral("port"), m_port);
        orvelle::writeXmlNumber(writer, QStringLiteral("mode"), m_mode);
        orvelle::writeXmlText(writer, QStringLiteral("volume"), QStringLiteral("%1").arg(m_volume));
        writer.writeEndElement();
    });
}

int KvTUTKDevice::readFromFile(const QString& path) {
    const auto document = orvelle::readXmlFile(path, QStringLiteral("KvTUTKDevice"));
    if (!document)
        return -1;
    for (QDomElement element = document->documentElement().firstChildElement(); !element.isNull();
         element = element.nextSiblingElement())
        readField(element.tagName(), element.text());
    return 0;
}

void KvTUTKDevice::readField(const QString& tag, const QString& text) {
    if (tag == QLatin1String("name"))
        m_name = text;
    else if (tag == QLatin1String("ip"))
        m_ip = text;
    else if (tag == QLatin1String("uid"))
        m_uid = text;
    else if (tag == QLatin1String("password"))
        setPassword(text);
    else if (tag == QLatin1String("port"))
        m_port = text.toInt();
    else if (tag == QLatin1String("mode"))
        m_mode = text.toInt();
    else if (tag == QLatin1String("deviceId"))
        m_deviceId = text.toInt();
    else if (tag == QLatin1String("volume"))
        m_volume = toVolume(text);
}
