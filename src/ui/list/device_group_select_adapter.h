#pragma once

#include "ui/list/group_list_adapter.h"

/// The cameras that can be chosen for a group: KvTUTKGroupSelectView.
class KvDeviceGroupSelectAdapter : public orvelle::GroupListAdapter {
    Q_OBJECT
public:
    explicit KvDeviceGroupSelectAdapter(QObject* parent = nullptr);

    KvLVItemView* createItemView(int index, QWidget* parent) override;
    QSize getItemSize(int index) override;
};
