#pragma once

#include "ui/list/group_item_view.h"

/// A camera in the group dialog with a mark that tells whether it is chosen.
class KvTUTKGroupSelectView : public orvelle::GroupItemView {
    Q_OBJECT
public:
    static constexpr QSize kSize{190, 100};
    static constexpr int kThumbnailWidth = 128;

    KvTUTKGroupSelectView(orvelle::ThumbnailLoader& loader, QWidget* parent = nullptr);

    void applySelection() override;

protected:
    void paintEvent(QPaintEvent* event) override;
};
