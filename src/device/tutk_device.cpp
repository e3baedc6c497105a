#include "device/tutk_device.h"

#include <QDebug>
#include <QDir>

#include <utility>

#include "core/configure.h"
#include "core/file_writer.h"
#include "core/wipe.h"
#include "device/device_ids.h"
#include "device/device_input_factory.h"
#include "device/device_messages.h"
#include "device/logging.h"

using orvelle::CameraRecord;

KvTUTKDevice::KvTUTKDevice() : KvTUTKDevice(CameraRecord()) {}

KvTUTKDevice::KvTUTKDevice(const QString& deviceCode)
    : KvTUTKDevice(CameraRecord::fromDeviceCode(deviceCode)) {}

KvTUTKDevice::KvTUTKDevice(CameraRecord record)
    : m_record(std::move(record)), m_file(QStringLiteral("KvTUTK")), m_session(m_channel, [this] {
          const std::lock_guard<std::mutex> lock(m_recordMutex);
          return orvelle::CameraSession::Account{m_record.uid, m_record.password};
      }) {
    m_channel.addListener(this, &KvTUTKDevice::rememberMode);
}

KvTUTKDevice::~KvTUTKDevice() {
    m_session.requestStop();
    m_session.close();
    orvelle::wipe(m_record.password);
}

std::vector<std::unique_ptr<KvTUTKDevice>> KvTUTKDevice::loadAll(const QString& directory) {
    std::vector<std::unique_ptr<KvTUTKDevice>> devices;
    const QFileInfoList files = QDir(directory).entryInfoList(
        {QStringLiteral("*.xml")}, QDir::Files | QDir::Readable, QDir::Name);
    for (const QFileInfo& file : files) {
        auto device = std::make_unique<KvTUTKDevice>();
        if (device->readFromFile(file.filePath()) != 0)
            continue;
        // The UID names files and directories, so nothing else may stand in it.
        if (orvelle::isUsableUid(device->uid()))
            devices.push_back(std::move(device));
        else
            qCWarning(lcDevice) << "skipped" << file.filePath() << ": no usable UID";
    }
    orvelle::keepNewest(devices, [](const KvTUTKDevice& one, const KvTUTKDevice& other) {
        return one.equals(&other);
    });
    return devices;
}

CameraRecord KvTUTKDevice::record() const {
    const std::lock_guard<std::mutex> lock(m_recordMutex);
    return m_record;
}

void KvTUTKDevice::setName(const QString& name) {
    const std::lock_guard<std::mutex> lock(m_recordMutex);
    m_record.name = name;
}

void KvTUTKDevice::setUid(const QString& uid) {
    const std::lock_guard<std::mutex> lock(m_recordMutex);
    m_record.uid = uid;
}

void KvTUTKDevice::setIp(const QString& ip) {
    const std::lock_guard<std::mutex> lock(m_recordMutex);
    m_record.ip = ip;
}

void KvTUTKDevice::setPassword(const QString& password) {
    const std::lock_guard<std::mutex> lock(m_recordMutex);
    orvelle::wipe(m_record.password);
    m_record.password = password;
}

void KvTUTKDevice::setPort(int port) {
    const std::lock_guard<std::mutex> lock(m_recordMutex);
    m_record.port = port;
}

void KvTUTKDevice::setMode(int mode) {
    const std::lock_guard<std::mutex> lock(m_recordMutex);
    m_record.mode = mode;
}

void KvTUTKDevice::setVolume(double volume) {
    const std::lock_guard<std::mutex> lock(m_recordMutex);
    m_record.volume = volume;
}

void KvTUTKDevice::changePassword(const QString& password) {
    setPassword(password);
    m_session.forgetRefusal();
}

bool KvTUTKDevice::equals(const KvDevice* other) const {
    return hasSameUid(other) && other->type() == type();
}

bool KvTUTKDevice::hasSameUid(const KvDevice* other) const {
    return other && other->uid() == uid();
}

KvBasePlayerInput* KvTUTKDevice::createInput() {
    const orvelle::DeviceInputFactory factory = orvelle::deviceInputFactory();
    return factory ? factory(*this) : nullptr;
}

void KvTUTKDevice::ensureDeviceId() {
    if (deviceId() >= 0)
        return;
    // Without the lock, which whoever gives ids out may need.
    const int id = orvelle::takeId(orvelle::settings::kDeviceMaxId);
    const std::lock_guard<std::mutex> lock(m_recordMutex);
    if (m_record.deviceId < 0)
        m_record.deviceId = id;
}

int KvTUTKDevice::save() {
    if (!orvelle::isUsableUid(uid()))
        return 0;
    ensureDeviceId();
    QByteArray bytes = toXml();
    const orvelle::WipedAtEnd<QByteArray> wiped(bytes);
    return m_file.write(uid(), bytes);
}

int KvTUTKDevice::saveLater() {
    if (!orvelle::isUsableUid(uid()))
        return 0;
    ensureDeviceId();
    return m_file.writeLater(uid(), toXml());
}

bool KvTUTKDevice::removeFile() {
    return orvelle::isUsableUid(uid()) && m_file.remove(uid());
}

bool KvTUTKDevice::writeToFile(const QString& path) const {
    qDebug().noquote() << "KvTUTKDevice writeToFile" << path;
    QByteArray bytes = toXml();
    const orvelle::WipedAtEnd<QByteArray> wiped(bytes);
    return orvelle::writePrivateFile(path, bytes);
}

int KvTUTKDevice::readFromFile(const QString& path) {
    CameraRecord read = record();
    if (!read.read(path))
        return -1;
    m_file.setFound(path);
    const std::lock_guard<std::mutex> lock(m_recordMutex);
    m_record = read;
    return 0;
}

void KvTUTKDevice::rememberMode(void* device, KvTUTKResponse* response) {
    if (response->type() != IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_RESP)
        return;
    const auto reply = orvelle::DeviceTypeReply::decode(response->data());
    if (!reply.type)
        return;
    auto* const self = static_cast<KvTUTKDevice*>(device);
    self->setMode(*reply.type);
    qDebug().noquote() << self->uid() << "-> type =" << *reply.type;
}
