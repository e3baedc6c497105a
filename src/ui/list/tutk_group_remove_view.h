#pragma once

#include "ui/list/group_item_view.h"

class QPushButton;

/// A chosen camera in the group dialog with a button, or the Delete key, that takes it out.
class KvTUTKGroupRemoveView : public orvelle::GroupItemView {
    Q_OBJECT
public:
    static constexpr QSize kSize{190, 100};
    static constexpr int kThumbnailWidth = 128;

    KvTUTKGroupRemoveView(orvelle::ThumbnailLoader& loader, QWidget* parent = nullptr);

    bool handleKey(int key) override;

signals:
    void clickRemoveButton(KvTUTKGroupRemoveView* view);

private slots:
    void _onClickRemoveButton(bool checked);
};
