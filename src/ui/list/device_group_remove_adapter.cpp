#include "ui/list/device_group_remove_adapter.h"

#include "ui/list/tutk_group_remove_view.h"

KvDeviceGroupRemoveAdapter::KvDeviceGroupRemoveAdapter(QObject* parent)
    : GroupListAdapter(KvTUTKGroupRemoveView::kThumbnailWidth, parent) {}

KvLVItemView* KvDeviceGroupRemoveAdapter::createItemView(int /*index*/, QWidget* parent) {
    auto* view = new KvTUTKGroupRemoveView(thumbnails(), parent);
    connect(view, &KvTUTKGroupRemoveView::clickRemoveButton, this,
            &KvDeviceGroupRemoveAdapter::clickItemViewRemove);
    return view;
}

QSize KvDeviceGroupRemoveAdapter::getItemSize(int /*index*/) {
    return KvTUTKGroupRemoveView::kSize;
}
