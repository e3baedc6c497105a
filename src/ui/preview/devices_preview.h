#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include "device/device_group.h"
#include "ui/preview/grid_drag.h"
#include "ui/preview/grid_layout.h"
#include "ui/widgets/toast.h"

class KvDevicePlayerView;
class KvDevicesPreviewUI;

/// The live pictures of one entry's cameras in a grid. Interface thread.
///
/// The entry is borrowed; before it or one of its cameras dies the owner takes it away with
/// setGroup(nullptr).
class KvDevicesPreview : public QWidget {
    Q_OBJECT
public:
    explicit KvDevicesPreview(QWidget* parent = nullptr);
    ~KvDevicesPreview() override;

    /// Shows an entry, which plays at once, or, with null, nothing. The one that is shown
    /// already goes on undisturbed.
    void setGroup(KvDeviceGroup* group);
    KvDeviceGroup* group() const { return m_group; }
    /// Shows the entry anew after it was edited, in its layout if its cameras still fit. Cameras
    /// that stay in it play on.
    void reloadGroup();
    /// The same where its cameras have changed; else everything stays, also a page over the tiles.
    void updateGroup();
    /// Lets go of a camera that is to die.
    void releaseDevice(KvDevice* device);
    /// How many recordings run that would end if only those cameras stayed.
    int recordingsBut(const QList<KvDevice*>& staying) const;
    int runningRecordings() const { return recordingsBut({}); }
    /// From the card of this camera; of any for null.
    bool isDownloading(const KvDevice* device = nullptr) const;
    /// Shows the names of entry and cameras anew.
    void updateNames();
    /// Ends everything and hides the grid.
    void closePreview();

    /// Index of the shown tile whose picture's area contains the point, or -1.
    int tileAt(int x, int y) const;
    /// Draws a tile's picture into `rect`: 0, or -1 outside the tiles or without an entry.
    int paintTile(int index, QPainter* painter, const QRect& rect) const;

    /// A key that nobody in the grid took, perhaps since the keyboard is elsewhere. False when it
    /// means nothing here.
    bool pressKey(const QKeyEvent& event);

    /// The window is minimised, or not any more.
    void setMinimised(bool minimised);

    bool isFullscreen() const;
    /// The window left full screen, whatever the way.
    void exitsFullscreen();

signals:
    void deviceGroupThumbUpdate(KvDeviceGroup* group);
    void requestFullscreen(bool fullscreen);
    void deviceGroupInfoChanged(KvDeviceGroup* group);
    void unbindDevice(KvDevice* device);
    /// The user wants to enter the new device code of a camera whose password was changed.
    void enterCode(KvDevice* device);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void _onPlayerViewThumbUpdate(KvDevicePlayerView* view);
    void _invokeThumbTimer();
    void _onClickPlayerViewShutdown(KvDevicePlayerView* view);
    void _onClickPlayerViewFullscreen(KvDevicePlayerView* view, bool fullscreen);
    void _onClickDeviceSettingButton(KvDevicePlayerView* view);
    void _onClickDeviceSDCardButton(KvDevicePlayerView* view);
    void _onClickDeviceCodeButton(KvDevicePlayerView* view);
    void _onOnlyThisHeard(KvDevicePlayerView* view);
    void _onClickWholeGridButton(bool);
    void _onClickLayout1x1(bool);
    void _onClickLayout2x2(bool);
    void _onClickLayout3x3(bool);
    void _onClickLayout4x4(bool);
    void _onClickLayout6x6(bool);
    void _onClickLayout13(bool);
    void _onClickLayout6(bool);
    void _onClickInfoViewBackButton();
    void _onUnbindDevice(KvDevice* device);
    void _onClickPlaybackViewBackButton();
    void _onPlaybackViewRequestFullscreen(bool fullscreen);

private:
    void connectChildren();
    void connectLayoutButtons();
    void reloadTiles();
    QList<KvDevice*> devicesShown() const;
    KvDevicePlayerView* tileOf(const KvDevice* device) const;
    void bind(KvDevicePlayerView* tile, KvDevice* device);
    void stopTiles();
    void unbindTiles();
    void hidePages();
    void alertOffline(KvDevicePlayerView* view);
    /// The keyboard goes on where the page was opened from.
    void focusPageOpener();
    void chooseLayout(int layout);
    void saveGroup();
    bool isGridInFront() const;
    bool canDrag() const;
    QPixmap dragPicture(int tile) const;
    /// The tile that the keyboard is in, or -1.
    int focusedTile() const;
    void focusTile(int tile);
    void goTo(orvelle::GridDirection direction);
    void swapTowards(orvelle::GridDirection direction);
    void toggleSingleTile();
    void setGridFullscreen(bool fullscreen);
    void swapTiles(int first, int second);

    KvDevicesPreviewUI* const m_ui;  ///< child
    QPointer<KvDeviceGroup> m_group;
    KvToast m_toast;
    orvelle::GridDrag m_drag;
    QTimer m_thumbTimer;                         ///< runs while a report of new thumbnails is due
    KvDevicePlayerView* m_pageOpener = nullptr;  ///< the tile, child of the interface
    QElapsedTimer m_sinceThumbUpdate;
};
