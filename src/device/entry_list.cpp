#include "device/entry_list.h"

#include <QDir>

#include <algorithm>
#include <limits>

#include "core/configure.h"
#include "core/file_utils.h"
#include "core/file_writer.h"
#include "device/device.h"
#include "device/device_ids.h"
#include "device/logging.h"

namespace orvelle {

namespace {

bool hasRoomBelow(int index) {
    return index < std::numeric_limits<int>::max();
}

}  // namespace

EntryList::EntryList(FindDevice findDevice, FileWriter& writer)
    : m_findDevice(std::move(findDevice)), m_writer(writer) {}

void EntryList::load(const QString& directory, const QList<KvDevice*>& devices) {
    for (const QFileInfo& file : QDir(directory).entryInfoList({QStringLiteral("*.xml")}))
        m_foundNames.append(file.completeBaseName());
    for (auto& group : KvDeviceGroup::loadAll(directory)) {
        resolve(*group);
        if (group->devices().size() < group->uids().size())
            qCWarning(lcDevice) << "the list entry" << group->key() << "names unknown cameras:"
                                << group->uids().size() - group->devices().size();
        group->setFileWriter(&m_writer);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back(std::move(group));
    }
    sort();
    keepCounterAhead();
    QStringList cameras;
    for (const KvDevice* device : devices)
        cameras.append(device->uid());
    for (const KvDeviceGroup* entry : all())
        if (entry->type() == KvDeviceGroup::kSingleCamera)
            cameras.append(entry->key());
    for (const QString& uid : qAsConst(cameras))
        if (KvDeviceGroup* const group = renumberGroupNamed(uid))
            group->saveLater();
    addMissing(devices);
}

// A camera whose entry was lost could be neither seen nor removed, nor bound again.
void EntryList::addMissing(const QList<KvDevice*>& devices) {
    for (KvDevice* device : devices) {
        if (find(device))
            continue;
        auto entry = std::make_unique<KvDeviceGroup>(device);
        entry->setName(device->displayName());
        const QList<KvDeviceGroup*> listed = all();
        if (!listed.isEmpty() && hasRoomBelow(listed.last()->groupIndex()))
            entry->setGroupIndex(listed.last()->groupIndex() + 1);
        qCWarning(lcDevice) << "made the missing list entry of" << device->uid();
        if (!add(std::move(entry)))
            qCWarning(lcDevice) << "cannot list" << device->uid();
    }
}

// Lost settings would give a new group the id, and so the file, of one that is listed.
void EntryList::keepCounterAhead() const {
    int highest = 0;
    for (const KvDeviceGroup* group : all())
        highest = std::max(highest, group->groupId());
    KvConfigure settings;
    if (highest > settings.getInt(settings::kGroupMaxId, 0))
        settings.setInt(settings::kGroupMaxId, highest);
}

QList<KvDeviceGroup*> EntryList::all() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    QList<KvDeviceGroup*> list;
    for (const auto& group : m_entries)
        list.append(group.get());
    return list;
}

bool EntryList::contains(const KvDeviceGroup* group) const {
    const QList<KvDeviceGroup*> list = all();
    return std::any_of(list.begin(), list.end(),
                       [group](const KvDeviceGroup* listed) { return listed->equals(group); });
}

KvDeviceGroup* EntryList::find(const KvDevice* device) const {
    for (KvDeviceGroup* group : all()) {
        const KvDevice* member = group->firstDevice();
        if (group->type() == KvDeviceGroup::kSingleCamera && member && member->equals(device))
            return group;
    }
    return nullptr;
}

bool EntryList::add(std::unique_ptr<KvDeviceGroup>&& group) {
    if (!group || contains(group.get()))
        return false;
    group->setFileWriter(&m_writer);
    if (group->type() == KvDeviceGroup::kGroup && group->groupId() < 1)
        group->setGroupId(freeId());
    else if (KvDeviceGroup* const moved = renumberGroupNamed(group->key()))
        moved->saveLater();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back(std::move(group));
    }
    reorder();
    return true;
}

std::unique_ptr<KvDeviceGroup> EntryList::take(const KvDeviceGroup* group) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [group](const auto& listed) { return listed->equals(group); });
    if (found == m_entries.end())
        return nullptr;
    std::unique_ptr<KvDeviceGroup> taken = std::move(*found);
    m_entries.erase(found);
    return taken;
}

void EntryList::sort() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::stable_sort(m_entries.begin(), m_entries.end(), [](const auto& left, const auto& right) {
        return left->groupIndex() < right->groupIndex();
    });
}

void EntryList::reorder() {
    sort();
    const QList<KvDeviceGroup*> list = all();
    for (int i = 0; i < list.size(); ++i) {
        // Each write is synchronised with the disk, so none is made in vain.
        if (list[i]->groupIndex() == i && list[i]->hasOwnFile())
            continue;
        list[i]->setGroupIndex(i);
        if (!list[i]->saveLater())
            qCWarning(lcDevice) << "a list entry without a name for its file:" << list[i]->name();
    }
}

void EntryList::resolveMembers() {
    for (KvDeviceGroup* group : all())
        resolve(*group);
}

void EntryList::resolve(KvDeviceGroup& group) const {
    QList<KvDevice*> members;
    for (const QString& uid : group.uids()) {
        if (KvDevice* device = m_findDevice(uid))
            members.append(device);
    }
    group.setResolvedDevices(members);
}

bool EntryList::makeRoomFor(const QString& uid) {
    KvDeviceGroup* const group = renumberGroupNamed(uid);
    return !group || group->save();
}

KvDeviceGroup* EntryList::renumberGroupNamed(const QString& uid) {
    const QList<KvDeviceGroup*> list = all();
    const auto named = std::find_if(list.begin(), list.end(), [&uid](const KvDeviceGroup* group) {
        return group->type() == KvDeviceGroup::kGroup && group->key() == uid;
    });
    if (uid.isEmpty() || named == list.end())
        return nullptr;
    const QString picture = (*named)->thumbnailFile();
    (*named)->setGroupId(freeId());
    // It would be taken for the camera's.
    m_writer.run(picture, [picture] { return QFile::remove(picture) || !QFile::exists(picture); });
    qCWarning(lcDevice) << "the group" << uid << "is now" << (*named)->key()
                        << "since a camera has that name";
    return *named;
}

int EntryList::freeId() const {
    QStringList taken = m_foundNames;
    for (const KvDeviceGroup* group : all()) {
        taken.append(group->key());
        taken.append(group->uids());
    }
    return takeId(settings::kGroupMaxId, [this, &taken](int id) {
        const QString name = QString::number(id);
        return taken.contains(name) || m_findDevice(name);
    });
}

}  // namespace orvelle
