#include <QDebug>

#include <algorithm>

#include "core/configure.h"
#include "device/device_ids.h"
#include "device/device_manager.h"
#include "device/logging.h"

int KvDeviceManager::getMaxGroupId() {
    const int id = KvConfigure().getInt(orvelle::settings::kGroupMaxId, 0);
    qDebug("getMaxGroupId %d", id);
    return id;
}

void KvDeviceManager::setMaxGroupId(int id) {
    qDebug("setMaxGroupId %d", id);
    KvConfigure().setInt(orvelle::settings::kGroupMaxId, id);
}

void KvDeviceManager::loadGroups(const QString& directory) {
    for (auto& group : KvDeviceGroup::loadAll(directory)) {
        resolve(*group);
        if (containsGroup(group.get())) {
            qCWarning(lcDevice) << "skipped a second list entry" << group->key();
            continue;
        }
        if (group->devices().size() < group->uids().size())
            qCWarning(lcDevice) << "the list entry" << group->key() << "names unknown cameras:"
                                << group->uids().size() - group->devices().size();
        const std::lock_guard<std::mutex> lock(m_groupsMutex);
        m_groups.push_back(std::move(group));
    }
    sortGroups();
    keepIdsUnique();
    addMissingEntries();
}

// A camera whose entry was lost could be neither seen nor removed, nor bound again.
void KvDeviceManager::addMissingEntries() {
    for (KvDevice* device : devicesSnapshot()) {
        if (findDeviceGroup(device))
            continue;
        auto entry = std::make_unique<KvDeviceGroup>(device);
        entry->setName(device->displayName());
        const QList<KvDeviceGroup*> listed = groups();
        if (!listed.isEmpty())
            entry->setGroupIndex(orvelle::idAfter(listed.last()->groupIndex()));
        qCWarning(lcDevice) << "made the missing list entry of" << device->uid();
        addGroup(std::move(entry));
    }
}

// Lost settings would give a new group the id, and so the file, of one that is listed.
void KvDeviceManager::keepIdsUnique() const {
    int highest = 0;
    for (const KvDeviceGroup* group : groups())
        highest = std::max(highest, group->groupId());
    if (highest > getMaxGroupId())
        setMaxGroupId(highest);
}

QList<KvDeviceGroup*> KvDeviceManager::groups() const {
    const std::lock_guard<std::mutex> lock(m_groupsMutex);
    QList<KvDeviceGroup*> list;
    for (const auto& group : m_groups)
        list.append(group.get());
    return list;
}

QList<KvDeviceGroup*> KvDeviceManager::singleCameraGroups() const {
    QList<KvDeviceGroup*> singles;
    for (KvDeviceGroup* group : groups()) {
        if (group->type() == KvDeviceGroup::kSingleCamera)
            singles.append(group);
    }
    return singles;
}

bool KvDeviceManager::containsGroup(const KvDeviceGroup* group) const {
    const QList<KvDeviceGroup*> list = groups();
    return std::any_of(list.begin(), list.end(),
                       [group](const KvDeviceGroup* listed) { return listed->equals(group); });
}

KvDeviceGroup* KvDeviceManager::findDeviceGroup(const KvDevice* device) const {
    for (KvDeviceGroup* group : singleCameraGroups()) {
        const KvDevice* member = group->firstDevice();
        if (member && member->equals(device))
            return group;
    }
    return nullptr;
}

bool KvDeviceManager::addGroup(std::unique_ptr<KvDeviceGroup>&& group) {
    if (!group || containsGroup(group.get()))
        return false;
    {
        const std::lock_guard<std::mutex> lock(m_groupsMutex);
        m_groups.push_back(std::move(group));
    }
    reorderGroups();
    return true;
}

std::unique_ptr<KvDeviceGroup> KvDeviceManager::removeGroup(const KvDeviceGroup* group) {
    const std::lock_guard<std::mutex> lock(m_groupsMutex);
    const auto found = std::find_if(m_groups.begin(), m_groups.end(),
                                    [group](const auto& listed) { return listed->equals(group); });
    if (found == m_groups.end())
        return nullptr;
    std::unique_ptr<KvDeviceGroup> taken = std::move(*found);
    m_groups.erase(found);
    return taken;
}

void KvDeviceManager::sortGroups() {
    const std::lock_guard<std::mutex> lock(m_groupsMutex);
    std::stable_sort(m_groups.begin(), m_groups.end(), [](const auto& left, const auto& right) {
        return left->groupIndex() < right->groupIndex();
    });
}

void KvDeviceManager::reorderGroups() {
    sortGroups();
    const QList<KvDeviceGroup*> list = groups();
    for (int i = 0; i < list.size(); ++i) {
        // Each write is synchronised with the disk, so none is made in vain.
        if (list[i]->groupIndex() == i && list[i]->hasOwnFile())
            continue;
        list[i]->setGroupIndex(i);
        if (!list[i]->saveLater())
            emit writeFailed();
    }
}

void KvDeviceManager::resolveMembers() {
    for (KvDeviceGroup* group : groups())
        resolve(*group);
}

void KvDeviceManager::resolve(KvDeviceGroup& group) const {
    QList<KvDevice*> members;
    for (const QString& uid : group.uids()) {
        if (KvDevice* device = findDevice(uid))
            members.append(device);
    }
    group.setResolvedDevices(members);
}
