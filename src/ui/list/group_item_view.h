#pragma once

#include <QPixmap>
#include <QPointer>
#include <QString>

#include "device/device_group.h"
#include "ui/list/device_state_text.h"
#include "ui/list/lv_item_view.h"

namespace orvelle {

class ThumbnailLoader;

/// An item that shows a list entry: thumbnail, state of its cameras, name. Paints itself, so that
/// hundreds of items cost little.
class GroupItemView : public KvLVItemView {
    Q_OBJECT
public:
    /// Null once the entry is gone.
    KvDeviceGroup* group() const { return m_group; }
    /// Borrowed; shown by the next showData().
    void setGroup(KvDeviceGroup* group) { m_group = group; }

    void showData() override;
    /// Shows the cameras' states when they have changed.
    void refreshState();

protected:
    struct Areas {
        QRect thumbnail;
        QRect name;
    };

    /// The loader lives longer.
    GroupItemView(const Areas& areas, ThumbnailLoader& loader, QWidget* parent);

    void paintEvent(QPaintEvent* event) override;
    void setNameArea(const QRect& area);

private:
    void takeThumbnail(const QString& path);
    void requestThumbnail();
    void drawThumbnail(QPainter& painter) const;
    void drawState(QPainter& painter) const;
    void drawName(QPainter& painter) const;
    void describe();

    Areas m_areas;
    ThumbnailLoader& m_loader;
    QPointer<KvDeviceGroup> m_group;
    QString m_name;
    EntryState m_state;
    QString m_thumbnailPath;
    QPixmap m_thumbnail;
    bool m_needsThumbnail = false;  ///< asked for when the item comes into view
};

}  // namespace orvelle
