#pragma once

#include <array>
#include <vector>

#include "ui/preview/grid_layout.h"
#include "ui/widgets/widget.h"

class KvDevicePlayerView;
class KvPushButton;
class KvSDCardPlaybackView;
class KvTUTKDeviceInfoView;
class QLabel;

/// The widgets of KvDevicesPreview: the tiles, the row of layout buttons below them, and the
/// pages that lie over both.
class KvDevicesPreviewUI : public KvWidget {
    Q_OBJECT
public:
    static constexpr int kLayoutButtons = orvelle::kGrid4x4 + 1;

    explicit KvDevicesPreviewUI(QWidget* parent);

    /// One that can be shown, see orvelle::usableLayout().
    void setLayoutIndex(int index);
    int tilesShown() const { return m_tilesShown; }
    /// The only tile that is shown, without the row of buttons; null for the whole grid.
    void setFullscreenTile(KvDevicePlayerView* tile);
    KvDevicePlayerView* fullscreenTile() const { return m_fullscreenTile; }
    void setTitle(const QString& title);
    /// Places the tiles and shows those that have a camera, unless a page covers them.
    void layOut();

    /// A page with its camera over the tiles.
    void showPage(QWidget* page);
    /// It has let go of its camera.
    void hidePage(QWidget* page);

    /// Shown from its first picture on, at a point of this widget.
    void showDragLabel(const QPixmap& pixmap, const QPoint& centre);
    void moveDragLabel(const QPoint& centre);
    void removeDragLabel();

    const std::vector<KvDevicePlayerView*>& tiles() const { return m_tiles; }
    /// Puts these in front, so that each goes to another place with what it plays.
    void moveToFront(const std::vector<KvDevicePlayerView*>& tiles);
    /// `layout` is below kLayoutButtons.
    KvPushButton* layoutButton(int layout) const;
    KvTUTKDeviceInfoView* infoView() const { return m_infoView; }
    KvSDCardPlaybackView* playbackView() const { return m_playbackView; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void setUpBar();
    void layOutBar();
    bool isPageShown() const;
    void setGridEnabled(bool enabled);
    void place(KvDevicePlayerView* tile, const QRect& area, int controlMode);

    int m_layoutIndex = orvelle::kGrid1x1;
    int m_tilesShown = 1;
    KvDevicePlayerView* m_fullscreenTile = nullptr;

    std::vector<KvDevicePlayerView*> m_tiles;  ///< children, as all below
    KvWidget* m_bar;
    QString m_titleText;
    QLabel* m_title;
    std::array<KvPushButton*, kLayoutButtons> m_layoutButtons{};
    QLabel* m_dragLabel = nullptr;  ///< only while a tile is dragged
    KvTUTKDeviceInfoView* m_infoView;
    KvSDCardPlaybackView* m_playbackView;
};
