#include "device/device_group.h"

#include <QDebug>
#include <QDir>

#include <utility>

#include "core/configure.h"
#include "core/file_utils.h"
#include "device/device.h"
#include "device/device_ids.h"

using orvelle::GroupRecord;

namespace {

constexpr QLatin1String kFileKind("KvTUTKGroup");

QString thumbnailOf(const QString& name) {
    return KvFileUtils::cachePath(name) + QStringLiteral("/thumb.jpg");
}

QStringList uidsOf(const QList<KvDevice*>& devices) {
    QStringList uids;
    for (const KvDevice* device : devices)
        uids.append(device->uid());
    return uids;
}

}  // namespace

KvDeviceGroup::KvDeviceGroup() : m_file(kFileKind) {}

KvDeviceGroup::KvDeviceGroup(KvDevice* device) : KvDeviceGroup() {
    setDevices({device});
}

KvDeviceGroup::KvDeviceGroup(const KvDeviceGroup& other) : QObject(), m_file(kFileKind) {
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

GroupRecord KvDeviceGroup::record() const {
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
    const GroupRecord mine = record();
    const GroupRecord theirs = other->record();
    if (mine.type == kGroup || theirs.type == kGroup)
        return mine.groupId >= 0 && mine.groupId == theirs.groupId;
    const KvDevice* device = firstDevice();
    return device && device->equals(other->firstDevice());
}

std::vector<std::unique_ptr<KvDeviceGroup>> KvDeviceGroup::loadAll(const QString& directory) {
    std::vector<std::unique_ptr<KvDeviceGroup>> groups;
    const QFileInfoList files = QDir(directory).entryInfoList(
        {QStringLiteral("*.xml")}, QDir::Files | QDir::Readable, QDir::Name);
    for (const QFileInfo& file : files) {
        auto group = std::make_unique<KvDeviceGroup>();
        if (group->readFromFile(file.filePath()))
            groups.push_back(std::move(group));
    }
    orvelle::keepNewest(groups, [](const KvDeviceGroup& one, const KvDeviceGroup& other) {
        const GroupRecord record = one.record();
        return record.type == other.type() && !record.key().isEmpty() &&
               record.key() == other.key();
    });
    return groups;
}

QString KvDeviceGroup::key() const {
    return record().key();
}

void KvDeviceGroup::setGroupId(int id) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_record.groupId = id;
    m_thumbnailReady = false;
}

bool KvDeviceGroup::save() {
    ensureGroupId();
    const GroupRecord current = record();
    const QString key = current.key();
    return !key.isEmpty() && m_file.write(key, current.toXml());
}

bool KvDeviceGroup::saveLater() {
    ensureGroupId();
    const GroupRecord current = record();
    const QString key = current.key();
    return !key.isEmpty() && m_file.writeLater(key, current.toXml());
}

bool KvDeviceGroup::hasOwnFile() const {
    return m_file.isNamed(key());
}

// The list gives its entries a number that no camera has; one that is not listed takes care of
// the files.
void KvDeviceGroup::ensureGroupId() {
    const GroupRecord current = record();
    if (current.type == kSingleCamera || current.groupId >= 1)
        return;
    const QString folder = KvFileUtils::devicesPath(kFileKind);
    setGroupId(orvelle::takeId(orvelle::settings::kGroupMaxId, [&folder](int id) {
        return QFile::exists(QStringLiteral("%1/%2.xml").arg(folder).arg(id));
    }));
}

bool KvDeviceGroup::removeFile() {
    return m_file.remove(key());
}

bool KvDeviceGroup::readFromFile(const QString& path) {
    GroupRecord read = record();
    if (!read.read(path))
        return false;
    m_file.setFound(path);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_record = read;
    return true;
}

QString KvDeviceGroup::deviceThumbnailPath(int index) const {
    QString uid;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        uid = m_deviceUids.value(index);
    }
    return uid.isEmpty() ? QString() : thumbnailOf(uid);
}

QString KvDeviceGroup::thumbnailFile() const {
    const QString name = key();
    return name.isEmpty() ? QString() : thumbnailOf(name);
}

orvelle::EntryThumbnail KvDeviceGroup::claimThumbnail() {
    orvelle::EntryThumbnail thumbnail;
    const GroupRecord current = record();
    if (current.type == kSingleCamera) {
        thumbnail.path = deviceThumbnailPath(0);
        return thumbnail;
    }
    if (current.groupId < 1)
        return thumbnail;
    QStringList members;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        members = m_deviceUids;
        thumbnail.isStale = !m_thumbnailReady;
        m_thumbnailReady = true;
    }
    thumbnail.path = thumbnailOf(current.key());
    qDebug().noquote() << "path =" << thumbnail.path;
    for (const QString& uid : std::as_const(members))
        thumbnail.memberPaths.append(thumbnailOf(uid));
    return thumbnail;
}

QString KvDeviceGroup::thumbnailPath() {
    const bool wasReady = isThumbnailReady();
    const orvelle::EntryThumbnail thumbnail = claimThumbnail();
    if (type() == kSingleCamera)
        return thumbnail.path;
    if (orvelle::refreshThumbnail(thumbnail))
        return thumbnail.path;
    setThumbnailReady(wasReady);
    return {};
}
