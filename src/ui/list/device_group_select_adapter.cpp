#include "ui/list/device_group_select_adapter.h"

#include "ui/list/tutk_group_select_view.h"

KvDeviceGroupSelectAdapter::KvDeviceGroupSelectAdapter(QObject* parent)
    : GroupListAdapter(KvTUTKGroupSelectView::kThumbnailWidth, parent) {}

KvLVItemView* KvDeviceGroupSelectAdapter::createItemView(int /*index*/, QWidget* parent) {
    return new KvTUTKGroupSelectView(thumbnails(), parent);
}

QSize KvDeviceGroupSelectAdapter::getItemSize(int /*index*/) {
    return KvTUTKGroupSelectView::kSize;
}
