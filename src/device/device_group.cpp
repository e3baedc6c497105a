#include "device/device_group.h"

#include <utility>

#include "device/device.h"
#include "device/tutk_device.h"

namespace {

QStringList uidsOf(const QList<KvDevice*>& devices) {
    QStringList uids;
    for (const KvDevice* device : devices)
        uids.append(device->uid());
    return uids;
}

}  // namespace

KvDeviceGroup::KvDeviceGroup(KvDevice* device) {
    setDevices({device});
}

KvDeviceGroup::KvDeviceGroup(const KvDeviceGroup& other) : QObject() {
    const std::lock_guard<std::mutex> lock(other.m_mutex);
    m_record = other.m_record;
    m_record.groupId = -1;
    m_record.groupIndex = -1;
    m_devices = other.m_devices;
    m_deviceUids = other.m_deviceUids;
}

void KvDeviceGroup::copyFrom(const KvDeviceGroup& other) {
    const KvDeviceGroup copy(other);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_record.uids = copy.m_record.uids;
    m_record.layout = copy.m_record.layout;
    m_record.type = copy.m_record.type;
    m_devices = copy.m_devices;
    m_deviceUids = copy.m_deviceUids;
    m_thumbnailReady = false;
}

KvDeviceGroup::Record KvDeviceGroup::record() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_record;
}

int KvDeviceGroup::groupId() const {
    return record().groupId;
}

int KvDeviceGroup::type() const {
    return record().type;
}

int KvDeviceGroup::layout() const {
    return record().layout;
}

QString KvDeviceGroup::name() const {
    return record().name;
}

QStringList KvDeviceGroup::uids() const {
    return record().uids;
}

int KvDeviceGroup::groupIndex() const {
    return record().groupIndex;
}

QList<KvDevice*> KvDeviceGroup::devices() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_devices;
}

KvDevice* KvDeviceGroup::firstDevice() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_devices.isEmpty() ? nullptr : m_devices.first();
}

bool KvDeviceGroup::isThumbnailReady() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_thumbnailReady;
}

void KvDeviceGroup::setType(int type) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_record.type = type;
}

void KvDeviceGroup::setLayout(int layout) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_record.layout = layout;
}

void KvDeviceGroup::setName(const QString& name) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_record.name = name;
}

void KvDeviceGroup::setGroupIndex(int index) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_record.groupIndex = index;
}

void KvDeviceGroup::setThumbnailReady(bool ready) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_thumbnailReady = ready;
}

void KvDeviceGroup::setDevices(const QList<KvDevice*>& devices) {
    setResolvedDevices(devices);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_record.uids = m_deviceUids;
    m_thumbnailReady = false;
}

// Positions in the two lists differ once a stored member is no longer known.
bool KvDeviceGroup::swapDevices(int first, int second) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const int count = m_devices.size();
    if (first < 0 || second < 0 || first >= count || second >= count)
        return false;
    const int firstStored = m_record.uids.indexOf(m_deviceUids[first]);
    const int secondStored = m_record.uids.indexOf(m_deviceUids[second]);
    if (firstStored >= 0 && secondStored >= 0)
        m_record.uids.swapItemsAt(firstStored, secondStored);
    m_devices.swapItemsAt(first, second);
    m_deviceUids.swapItemsAt(first, second);
    m_thumbnailReady = false;
    return true;
}

void KvDeviceGroup::setResolvedDevices(const QList<KvDevice*>& devices) {
    const QStringList uids = uidsOf(devices);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_devices = devices;
    if (std::exchange(m_deviceUids, uids) != uids)
        m_thumbnailReady = false;
}

bool KvDeviceGroup::equals(const KvDeviceGroup* other) const {
    if (!other)
        return false;
    // An entry whose camera is gone equals no other, but it can still be found and removed.
    if (this == other)
        return true;
    const Record mine = record();
    const Record theirs = other->record();
    if (mine.type == kGroup || theirs.type == kGroup)
        return mine.groupId >= 0 && mine.groupId == theirs.groupId;
    const KvDevice* device = firstDevice();
    return device && device->equals(other->firstDevice());
}
