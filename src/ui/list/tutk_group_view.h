#pragma once

#include "ui/list/group_item_view.h"

class QPushButton;

/// An item of the camera list. Its button edits a group, or shows the groups of a camera; F2 is
/// its key.
class KvTUTKGroupView : public orvelle::GroupItemView {
    Q_OBJECT
public:
    static constexpr QSize kSize{170, 125};
    static constexpr int kThumbnailWidth = 160;

    KvTUTKGroupView(orvelle::ThumbnailLoader& loader, QWidget* parent = nullptr);

    /// Whether some group contains this camera; shown by the next showData().
    void setInGroup(bool isInGroup) { m_isInGroup = isInGroup; }
    void showData() override;
    bool handleKey(int key) override;

signals:
    void clickEditButton(KvLVItemView* view);

private slots:
    void _onClickEditButton(bool checked);

private:
    void showButton(const QString& image, const char* key);
    void hideButton();

    bool m_isInGroup = false;
    QPushButton* m_editButton = nullptr;  ///< made when first needed
};
