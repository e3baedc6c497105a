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
    /// The only tile that is shown, above the row of buttons; null for the whole grid.
    void setSingleTile(KvDevicePlayerView* tile);
    KvDevicePlayerView* singleTile() const { return m_singleTile; }
    /// Whatever is shown, without the row of buttons.
    void setGridFullscreen(bool fullscreen);
    bool isGridFullscreen() const { return m_isGridFullscreen; }
    /// The tile beside another one, or -1.
    int neighbour(int tile, orvelle::GridDirection direction) const;
    void setTitle(const QString& title);
    /// Places the tiles and shows those that have a camera, unless a page covers them.
    void layOut();

    /// A page with its camera over the tiles.
    void showPage(QWidget* page);
    /// It has let go of its camera.
    void hidePage(QWidget* page);

    const std::vector<KvDevicePlayerView*>& tiles() const { return m_tiles; }
    /// Puts these in front, so that each goes to another place with what it plays.
    void moveToFront(const std::vector<KvDevicePlayerView*>& tiles);
    /// `layout` is below kLayoutButtons.
    KvPushButton* layoutButton(int layout) const;
    /// The layout whose button has that place in the row.
    static int layoutAt(int place);
    KvPushButton* wholeGridButton() const { return m_wholeGridButton; }
    KvTUTKDeviceInfoView* infoView() const { return m_infoView; }
    KvSDCardPlaybackView* playbackView() const { return m_playbackView; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void setUpBar();
    void layOutBar();
    bool isPageShown() const;
    void setGridEnabled(bool enabled);
    void placeAlone(KvDevicePlayerView* tile);
    void place(KvDevicePlayerView* tile, const QRect& area, int controlMode, int inset);

    int m_layoutIndex = orvelle::kGrid1x1;
    int m_tilesShown = 1;
    std::vector<QRect> m_places;  ///< of the grid, also while a tile is shown alone
    KvDevicePlayerView* m_fullscreenTile = nullptr;
    KvDevicePlayerView* m_singleTile = nullptr;
    bool m_isGridFullscreen = false;

    std::vector<KvDevicePlayerView*> m_tiles;  ///< children, as all below
    KvWidget* m_bar;
    QString m_titleText;
    QLabel* m_title;
    std::array<KvPushButton*, kLayoutButtons> m_layoutButtons{};
    KvPushButton* m_wholeGridButton = nullptr;
    KvTUTKDeviceInfoView* m_infoView;
    KvSDCardPlaybackView* m_playbackView;
};
