#include "ui/list/device_group_adapter.h"

#include "device/device_group.h"
#include "ui/list/tutk_group_view.h"

KvDeviceGroupAdapter::KvDeviceGroupAdapter(QObject* parent)
    : GroupListAdapter(KvTUTKGroupView::kThumbnailWidth, parent) {}

KvLVItemView* KvDeviceGroupAdapter::createItemView(int /*index*/, QWidget* parent) {
    auto* view = new KvTUTKGroupView(thumbnails(), parent);
    connect(view, &KvTUTKGroupView::clickEditButton, this, &KvDeviceGroupAdapter::clickEditButton);
    return view;
}

void KvDeviceGroupAdapter::bindItemView(int index, KvLVItemView* view) {
    const KvDeviceGroup* entry = groupAt(index);
    if (auto* item = qobject_cast<KvTUTKGroupView*>(view))
        item->setInGroup(entry && m_groupedUids.contains(entry->uids().value(0)));
    GroupListAdapter::bindItemView(index, view);
}

QSize KvDeviceGroupAdapter::getItemSize(int /*index*/) {
    return KvTUTKGroupView::kSize;
}
