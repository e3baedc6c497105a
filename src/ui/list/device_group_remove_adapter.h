#pragma once

#include "ui/list/group_list_adapter.h"

class KvTUTKGroupRemoveView;

/// The cameras that were chosen for a group: KvTUTKGroupRemoveView.
class KvDeviceGroupRemoveAdapter : public orvelle::GroupListAdapter {
    Q_OBJECT
public:
    explicit KvDeviceGroupRemoveAdapter(QObject* parent = nullptr);

    KvLVItemView* createItemView(int index, QWidget* parent) override;
    QSize getItemSize(int index) override;

signals:
    void clickItemViewRemove(KvTUTKGroupRemoveView* view);
};
