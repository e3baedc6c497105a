#include "ui/list/group_list_adapter.h"

#include "ui/list/group_item_view.h"

namespace orvelle {

GroupListAdapter::GroupListAdapter(int thumbnailWidth, QObject* parent)
    : KvBaseAdapter(parent), m_thumbnails(thumbnailWidth) {}

void GroupListAdapter::setGroups(const QList<KvDeviceGroup*>& groups) {
    m_groups.clear();
    for (KvDeviceGroup* group : groups)
        m_groups.append(group);
    emit refresh();
}

KvDeviceGroup* GroupListAdapter::groupAt(int index) const {
    return m_groups.value(index);
}

int GroupListAdapter::indexOf(const KvDeviceGroup* group) const {
    for (int i = 0; group && i < m_groups.size(); ++i) {
        if (m_groups[i] == group)
            return i;
    }
    return -1;
}

KvDeviceGroup* GroupListAdapter::groupOf(const KvLVItemView* view) {
    const auto* item = qobject_cast<const GroupItemView*>(view);
    return item ? item->group() : nullptr;
}

int GroupListAdapter::getCount() {
    return m_groups.size();
}

void GroupListAdapter::bindItemView(int index, KvLVItemView* view) {
    auto* item = qobject_cast<GroupItemView*>(view);
    if (!item)
        return;
    item->setGroup(groupAt(index));
    item->showData();
}

}  // namespace orvelle
