#include "ui/preview/devices_preview.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

#include "device/tutk_device.h"
#include "ui/dialogs/alert_dialog.h"
#include "ui/info/device_info_view.h"
#include "ui/palette.h"
#include "ui/playback/sdcard_playback_view.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/devices_preview_ui.h"
#include "ui/preview/keys_dialog.h"
#include "ui/preview/preview_keys.h"
#include "ui/preview/recording_question.h"
#include "ui/widgets/focus_ring.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"

namespace {

constexpr QSize kDragSize(48, 27);
constexpr int kThumbIntervalMs = 1000;
constexpr int kToastMargin = 10;
constexpr int kToastBottom = 50;  // above the row of layout buttons

}  // namespace

KvDevicesPreview::KvDevicesPreview(QWidget* parent)
    : QWidget(parent), m_ui(new KvDevicesPreviewUI(this)), m_drag(m_ui) {
    setAttribute(Qt::WA_MouseTracking);
    m_toast.setMargins(kToastMargin, kToastBottom);
    m_thumbTimer.setSingleShot(true);
    connect(&m_thumbTimer, &QTimer::timeout, this, &KvDevicesPreview::_invokeThumbTimer);
    connectChildren();
    connectLayoutButtons();
}

KvDevicesPreview::~KvDevicesPreview() {
    unbindTiles();
}

void KvDevicesPreview::connectChildren() {
    using Grid = KvDevicesPreview;
    using Tile = KvDevicePlayerView;
    for (const Tile* tile : m_ui->tiles()) {
        connect(tile, &Tile::playerViewThumbUpdate, this, &Grid::_onPlayerViewThumbUpdate);
        connect(tile, &Tile::clickCloseButton, this, &Grid::_onClickPlayerViewShutdown);
        connect(tile, &Tile::clickFullButton, this, &Grid::_onClickPlayerViewFullscreen);
        connect(tile, &Tile::clickSettingButton, this, &Grid::_onClickDeviceSettingButton);
        connect(tile, &Tile::clickSDCardButton, this, &Grid::_onClickDeviceSDCardButton);
        connect(tile, &Tile::clickCodeButton, this, &Grid::_onClickDeviceCodeButton);
        connect(tile, &Tile::onlyThisHeard, this, &Grid::_onOnlyThisHeard);
    }
    connect(m_ui->infoView(), &KvTUTKDeviceInfoView::clickBackButton, this,
            &Grid::_onClickInfoViewBackButton);
    connect(m_ui->infoView(), &KvTUTKDeviceInfoView::unbindDevice, this, &Grid::_onUnbindDevice);
    m_ui->infoView()->setUnbindWarning(
        [this] { return orvelle::runningRecordingsText(runningRecordings()); });
    connect(m_ui->playbackView(), &KvSDCardPlaybackView::clickBackButton, this,
            &Grid::_onClickPlaybackViewBackButton);
    connect(m_ui->playbackView(), &KvSDCardPlaybackView::requestFullscreen, this,
            &Grid::_onPlaybackViewRequestFullscreen);
}

void KvDevicesPreview::connectLayoutButtons() {
    using Grid = KvDevicesPreview;
    const auto link = [this](int layout, void (Grid::*slot)(bool)) {
        connect(m_ui->layoutButton(layout), &QPushButton::clicked, this, slot);
    };
    link(orvelle::kGrid1x1, &Grid::_onClickLayout1x1);
    link(orvelle::kGrid2x2, &Grid::_onClickLayout2x2);
    link(orvelle::kGrid3x3, &Grid::_onClickLayout3x3);
    link(orvelle::kGrid4x4, &Grid::_onClickLayout4x4);
    link(orvelle::kGrid13, &Grid::_onClickLayout13);
    link(orvelle::kGrid6, &Grid::_onClickLayout6);
    connect(m_ui->wholeGridButton(), &QPushButton::clicked, this, &Grid::_onClickWholeGridButton);
}

void KvDevicesPreview::setGroup(KvDeviceGroup* group) {
    if (group && group == m_group)
        return;
    unbindTiles();
    m_group = group;
    reloadGroup();
}

void KvDevicesPreview::reloadGroup() {
    m_drag.end();
    m_ui->setFullscreenTile(nullptr);
    m_ui->setSingleTile(nullptr);
    hidePages();
    m_ui->setTitle(m_group ? m_group->name() : QString());
    if (!m_group) {
        m_ui->setGridFullscreen(false);
        unbindTiles();
        return;
    }
    m_ui->setLayoutIndex(orvelle::usableLayout(m_group->layout(), m_group->devices().size()));
    reloadTiles();
}

void KvDevicesPreview::updateGroup() {
    QList<KvDevice*> bound;
    for (const KvDevicePlayerView* tile : m_ui->tiles()) {
        if (tile->device())
            bound += tile->device();
    }
    if (bound == devicesShown())
        updateNames();
    else
        reloadGroup();
}

void KvDevicesPreview::updateNames() {
    m_ui->setTitle(m_group ? m_group->name() : QString());
    for (KvDevicePlayerView* tile : m_ui->tiles())
        tile->updateName();
}

/// A camera that plays already goes on, in whatever place.
void KvDevicesPreview::reloadTiles() {
    if (!m_group)
        return;
    const QList<KvDevice*> devices = devicesShown();
    const auto goes = [&devices](const KvDevicePlayerView* tile) {
        return tile->device() && !devices.contains(tile->device());
    };
    for (KvDevicePlayerView* tile : m_ui->tiles()) {
        if (goes(tile))
            tile->requestStop();
    }
    for (KvDevicePlayerView* tile : m_ui->tiles()) {
        if (goes(tile))
            tile->setDevice(nullptr);
    }
    std::vector<KvDevicePlayerView*> order;
    for (KvDevice* device : devices) {
        KvDevicePlayerView* tile = tileOf(device);
        if (!tile)
            tile = tileOf(nullptr);
        bind(tile, device);
        order.push_back(tile);
    }
    m_ui->moveToFront(order);
    for (size_t i = order.size(); i < m_ui->tiles().size(); ++i)
        m_ui->tiles()[i]->hide();
    if (m_ui->singleTile() && !m_ui->singleTile()->device())
        m_ui->setSingleTile(nullptr);
    m_ui->layOut();
}

void KvDevicesPreview::bind(KvDevicePlayerView* tile, KvDevice* device) {
    if (tile->device() == device && tile->isStarted()) {
        tile->updateName();
        return;
    }
    tile->setNoSound(m_group->type() == KvDeviceGroup::kGroup);
    tile->setDevice(device);
}

QList<KvDevice*> KvDevicesPreview::devicesShown() const {
    return m_group ? m_group->devices().mid(0, m_ui->tilesShown()) : QList<KvDevice*>();
}

/// Null: the first tile without a camera.
KvDevicePlayerView* KvDevicesPreview::tileOf(const KvDevice* device) const {
    const auto& tiles = m_ui->tiles();
    const auto tile = std::find_if(tiles.begin(), tiles.end(),
                                   [device](const auto* t) { return t->device() == device; });
    return tile == tiles.end() ? nullptr : *tile;
}

void KvDevicesPreview::releaseDevice(KvDevice* device) {
    KvDevicePlayerView* tile = device ? tileOf(device) : nullptr;
    if (!tile)
        return;
    hidePages();
    tile->setDevice(nullptr);
    tile->hide();
    if (m_ui->singleTile() == tile)
        m_ui->setSingleTile(nullptr);
}

int KvDevicesPreview::recordingsBut(const QList<KvDevice*>& staying) const {
    const auto& tiles = m_ui->tiles();
    return static_cast<int>(std::count_if(tiles.begin(), tiles.end(), [&](const auto* tile) {
        return tile->isRecording() && !staying.contains(tile->device());
    }));
}

bool KvDevicesPreview::isDownloading(const KvDevice* device) const {
    const KvSDCardPlaybackView& page = *m_ui->playbackView();
    return page.isDownloading() && (!device || page.device() == device);
}

/// All are asked before the first is waited for, so that their threads end side by side.
void KvDevicesPreview::stopTiles() {
    for (KvDevicePlayerView* tile : m_ui->tiles())
        tile->requestStop();
    for (KvDevicePlayerView* tile : m_ui->tiles())
        tile->stopPlay();
}

void KvDevicesPreview::unbindTiles() {
    stopTiles();
    for (KvDevicePlayerView* tile : m_ui->tiles()) {
        tile->setDevice(nullptr);
        tile->hide();
    }
}

void KvDevicesPreview::hidePages() {
    m_ui->infoView()->setDevice(nullptr);
    m_ui->hidePage(m_ui->infoView());
    m_ui->playbackView()->setDevice(nullptr);
    m_ui->hidePage(m_ui->playbackView());
}

void KvDevicesPreview::closePreview() {
    setGroup(nullptr);
    setGeometry(QRect());
    hide();
    emit requestFullscreen(false);
}

int KvDevicesPreview::tileAt(int x, int y) const {
    if (!m_group)
        return -1;
    const int count = qMin(m_ui->tilesShown(), m_group->devices().size());
    for (int i = 0; i < count; ++i) {
        const KvDevicePlayerView* tile = m_ui->tiles()[i];
        if (tile->isVisible() && tile->inVideoArea(x, y))
            return i;
    }
    return -1;
}

int KvDevicesPreview::paintTile(int index, QPainter* painter, const QRect& rect) const {
    if (!m_group || index < 0 || index >= orvelle::kMaxTiles)
        return -1;
    m_ui->tiles()[index]->paintThumb(painter, rect);
    return 0;
}

void KvDevicesPreview::setMinimised(bool minimised) {
    for (KvDevicePlayerView* tile : m_ui->tiles())
        tile->setMinimised(minimised);
}

bool KvDevicesPreview::isFullscreen() const {
    return m_ui->fullscreenTile() != nullptr || m_ui->isGridFullscreen() ||
           (!m_ui->playbackView()->isHidden() && m_ui->playbackView()->isFullscreen());
}

void KvDevicesPreview::exitsFullscreen() {
    qDebug("exitsFullscreen");
    m_ui->setFullscreenTile(nullptr);
    m_ui->setGridFullscreen(false);
    m_ui->playbackView()->exitsFullscreen();
}

/// The list hears of it once a second at most, and of the last one at any rate.
void KvDevicesPreview::_onPlayerViewThumbUpdate(KvDevicePlayerView*) {
    const qint64 elapsed =
        m_sinceThumbUpdate.isValid() ? m_sinceThumbUpdate.elapsed() : qint64{kThumbIntervalMs};
    if (elapsed >= kThumbIntervalMs)
        _invokeThumbTimer();
    else if (!m_thumbTimer.isActive())
        m_thumbTimer.start(static_cast<int>(kThumbIntervalMs - elapsed));
}

void KvDevicesPreview::_invokeThumbTimer() {
    m_sinceThumbUpdate.start();
    if (!m_group)
        return;
    m_group->setThumbnailReady(false);
    emit deviceGroupThumbUpdate(m_group);
}

void KvDevicesPreview::_onClickPlayerViewShutdown(KvDevicePlayerView*) {
    if (orvelle::mayEndRecordings(runningRecordings(), this))
        closePreview();
}

void KvDevicesPreview::_onClickPlayerViewFullscreen(KvDevicePlayerView* view, bool fullscreen) {
    if (fullscreen) {
        m_drag.end();
        // Its Esc key leads back.
        view->setFocus(Qt::OtherFocusReason);
        m_ui->setFullscreenTile(view);
    } else {
        // The keyboard goes on from where it is.
        if (!orvelle::FocusRing::isKeyboardInUse())
            view->clearFocus();
        m_ui->setFullscreenTile(nullptr);
        m_ui->setGridFullscreen(false);
    }
    emit requestFullscreen(fullscreen);
}

void KvDevicesPreview::_onClickDeviceSettingButton(KvDevicePlayerView* view) {
    if (!view->device() || !view->device()->isOnline())
        return;
    qDebug("_onClickDeviceSettingButton");
    m_pageOpener = view;
    m_ui->infoView()->setDevice(view->device());
    m_ui->showPage(m_ui->infoView());
}

void KvDevicesPreview::_onClickInfoViewBackButton() {
    m_ui->infoView()->setDevice(nullptr);
    m_ui->hidePage(m_ui->infoView());
    focusPageOpener();
}

void KvDevicesPreview::_onUnbindDevice(KvDevice* device) {
    emit unbindDevice(device);
}

void KvDevicesPreview::_onClickDeviceSDCardButton(KvDevicePlayerView* view) {
    if (!view->device())
        return;
    if (!view->device()->isOnline()) {
        alertOffline(view);
        return;
    }
    auto* device = qobject_cast<KvTUTKDevice*>(view->device());
    if (!device || !orvelle::mayEndRecordings(runningRecordings(), this) ||
        view->device() != device)
        return;
    stopTiles();
    m_ui->playbackView()->setDevice(device);
    // It may have been lost since it was asked.
    if (m_ui->playbackView()->device()) {
        m_pageOpener = view;
        m_ui->showPage(m_ui->playbackView());
        return;
    }
    reloadTiles();
    alertOffline(view);
}

void KvDevicesPreview::_onClickDeviceCodeButton(KvDevicePlayerView* view) {
    if (view->device())
        emit enterCode(view->device());
}

void KvDevicesPreview::_onOnlyThisHeard(KvDevicePlayerView* view) {
    for (KvDevicePlayerView* tile : m_ui->tiles()) {
        if (tile != view)
            tile->silence();
    }
}

void KvDevicesPreview::_onClickWholeGridButton(bool) {
    setGridFullscreen(!m_ui->isGridFullscreen());
}

void KvDevicesPreview::setGridFullscreen(bool fullscreen) {
    m_drag.end();
    m_ui->setFullscreenTile(nullptr);
    m_ui->setGridFullscreen(fullscreen);
    if (fullscreen && focusedTile() < 0)
        setFocus(Qt::OtherFocusReason);
    emit requestFullscreen(fullscreen);
}

void KvDevicesPreview::alertOffline(KvDevicePlayerView* view) {
    KvAlertDialog alert(orvelle::text("camera_offline"), window());
    alert.setCancelVisible(false);
    alert.execCentred(view);
}

void KvDevicesPreview::focusPageOpener() {
    if (m_pageOpener)
        m_pageOpener->setFocus(Qt::OtherFocusReason);
}

void KvDevicesPreview::_onClickPlaybackViewBackButton() {
    m_ui->playbackView()->setDevice(nullptr);
    const bool wasFullscreen = isFullscreen();
    KvDevicePlayerView* tile = m_ui->fullscreenTile();
    m_ui->hidePage(m_ui->playbackView());
    qDebug("reply");
    m_ui->setFullscreenTile(nullptr);
    reloadTiles();
    focusPageOpener();
    // The window stays as it was only for the tile that it was full of before.
    if (tile)
        _onClickPlayerViewFullscreen(tile, true);
    else if (wasFullscreen && !m_ui->isGridFullscreen())
        emit requestFullscreen(false);
}

/// A window that is left by way of the page is not full of a tile behind it.
void KvDevicesPreview::_onPlaybackViewRequestFullscreen(bool fullscreen) {
    if (!fullscreen) {
        m_ui->setFullscreenTile(nullptr);
        m_ui->setGridFullscreen(false);
    }
    emit requestFullscreen(fullscreen);
}

void KvDevicesPreview::_onClickLayout1x1(bool) {
    chooseLayout(orvelle::kGrid1x1);
}

void KvDevicesPreview::_onClickLayout2x2(bool) {
    chooseLayout(orvelle::kGrid2x2);
}

void KvDevicesPreview::_onClickLayout3x3(bool) {
    chooseLayout(orvelle::kGrid3x3);
}

void KvDevicesPreview::_onClickLayout4x4(bool) {
    chooseLayout(orvelle::kGrid4x4);
}

void KvDevicesPreview::_onClickLayout6x6(bool) {
    chooseLayout(orvelle::kGrid6x6);
}

void KvDevicesPreview::_onClickLayout13(bool) {
    chooseLayout(orvelle::kGrid13);
}

void KvDevicesPreview::_onClickLayout6(bool) {
    chooseLayout(orvelle::kGrid6);
}

void KvDevicesPreview::chooseLayout(int layout) {
    if (!m_group)
        return;
    const int count = m_group->devices().size();
    if (count > orvelle::tileCount(layout)) {
        m_toast.show(
            this, orvelle::text("needs_to_be_deleted_some_device_to_meet_the_display_requirements"),
            KvToast::kBottomCentre, orvelle::palette::kToastMs);
        return;
    }
    m_ui->setSingleTile(nullptr);
    m_group->setLayout(layout);
    saveGroup();
    m_ui->setLayoutIndex(orvelle::usableLayout(layout, count));
}

void KvDevicesPreview::saveGroup() {
    if (!m_group->saveLater())
        m_toast.show(this, orvelle::text("it_could_not_be_saved"), KvToast::kBottomCentre,
                     orvelle::palette::kToastMs);
}

void KvDevicesPreview::resizeEvent(QResizeEvent*) {
    m_ui->setGeometry(rect());
}

bool KvDevicesPreview::isGridInFront() const {
    return m_group && m_ui->infoView()->isHidden() && m_ui->playbackView()->isHidden();
}

bool KvDevicesPreview::canDrag() const {
    return isGridInFront() && m_group->devices().size() > 1 &&
           m_group->type() != KvDeviceGroup::kSingleCamera && !m_ui->fullscreenTile() &&
           !m_ui->singleTile() && m_ui->tilesShown() > 1;
}

QPixmap KvDevicesPreview::dragPicture(int tile) const {
    QPixmap picture(kDragSize);
    QPainter painter(&picture);
    paintTile(tile, &painter, picture.rect());
    return picture;
}

void KvDevicesPreview::mousePressEvent(QMouseEvent* event) {
    const bool mayDrag = event->button() == Qt::LeftButton && canDrag();
    m_drag.press(mayDrag ? tileAt(event->pos().x(), event->pos().y()) : -1, event->pos());
}

void KvDevicesPreview::mouseMoveEvent(QMouseEvent* event) {
    m_drag.move(event->pos(), [this](int tile) { return dragPicture(tile); });
}

void KvDevicesPreview::mouseReleaseEvent(QMouseEvent* event) {
    const int from = m_drag.release();
    const int to = tileAt(event->pos().x(), event->pos().y());
    if (from >= 0 && to >= 0 && from != to)
        swapTiles(qMin(from, to), qMax(from, to));
}

void KvDevicesPreview::hideEvent(QHideEvent* event) {
    m_drag.end();
    QWidget::hideEvent(event);
}

void KvDevicesPreview::swapTiles(int first, int second) {
    qDebug("mouseReleaseEvent swap(%d, %d)", first, second);
    if (!m_group->swapDevices(first, second))
        return;
    m_group->setThumbnailReady(false);
    reloadTiles();
    saveGroup();
    emit deviceGroupInfoChanged(m_group);
}

void KvDevicesPreview::keyPressEvent(QKeyEvent* event) {
    if (!pressKey(*event))
        QWidget::keyPressEvent(event);
}

bool KvDevicesPreview::pressKey(const QKeyEvent& event) {
    using orvelle::GridDirection;
    using orvelle::PreviewKey;
    if (!isGridInFront())
        return false;
    if (event.key() == Qt::Key_Escape && (m_ui->isGridFullscreen() || m_ui->singleTile())) {
        m_ui->isGridFullscreen() ? setGridFullscreen(false) : toggleSingleTile();
        return true;
    }
    const PreviewKey key = orvelle::previewKey(event);
    switch (key) {
        case PreviewKey::kLeft:
        case PreviewKey::kRight:
        case PreviewKey::kUp:
        case PreviewKey::kDown:
            goTo(static_cast<GridDirection>(int(key) - int(PreviewKey::kLeft)));
            return true;
        case PreviewKey::kSwapLeft:
        case PreviewKey::kSwapRight:
        case PreviewKey::kSwapUp:
        case PreviewKey::kSwapDown:
            swapTowards(static_cast<GridDirection>(int(key) - int(PreviewKey::kSwapLeft)));
            return true;
        case PreviewKey::kLayout1:
        case PreviewKey::kLayout2:
        case PreviewKey::kLayout3:
        case PreviewKey::kLayout4:
        case PreviewKey::kLayout5:
        case PreviewKey::kLayout6:
            chooseLayout(m_ui->layoutAt(int(key) - int(PreviewKey::kLayout1)));
            return true;
        case PreviewKey::kOpen:
            // A button that has the keyboard is pressed by that key.
            if (qobject_cast<QAbstractButton*>(window()->focusWidget()))
                return false;
            toggleSingleTile();
            return true;
        case PreviewKey::kWholeGrid:
            setGridFullscreen(!window()->isFullScreen());
            return true;
        case PreviewKey::kHelp:
            orvelle::KeysDialog(window()).execCentred(this);
            return true;
        default:
            return false;
    }
}

int KvDevicesPreview::focusedTile() const {
    const QWidget* focused = window()->focusWidget();
    const auto& tiles = m_ui->tiles();
    const auto tile = std::find_if(tiles.begin(), tiles.end(), [focused](const auto* each) {
        return each->isVisible() && each->isAncestorOf(focused);
    });
    return tile == tiles.end() ? -1 : static_cast<int>(tile - tiles.begin());
}

void KvDevicesPreview::focusTile(int tile) {
    m_ui->tiles()[tile]->setFocus(Qt::ShortcutFocusReason);
}

/// Alone, a tile gives its place to the one that would be there.
void KvDevicesPreview::goTo(orvelle::GridDirection direction) {
    const int from = focusedTile();
    const int to = from < 0 ? 0 : m_ui->neighbour(from, direction);
    if (to < 0 || to >= m_group->devices().size())
        return;
    if (m_ui->singleTile() && !m_ui->fullscreenTile())
        m_ui->setSingleTile(m_ui->tiles()[to]);
    if (m_ui->tiles()[to]->isVisible())
        focusTile(to);
}

void KvDevicesPreview::swapTowards(orvelle::GridDirection direction) {
    const int from = focusedTile();
    const int to = from < 0 ? -1 : m_ui->neighbour(from, direction);
    if (!canDrag() || to < 0 || to >= m_group->devices().size())
        return;
    swapTiles(qMin(from, to), qMax(from, to));
    // What was chosen stays so, in its new place.
    focusTile(to);
}

void KvDevicesPreview::toggleSingleTile() {
    if (m_ui->fullscreenTile())
        return;
    const int tile = focusedTile();
    if (m_ui->singleTile())
        m_ui->setSingleTile(nullptr);
    else if (tile >= 0 && m_ui->tilesShown() > 1)
        m_ui->setSingleTile(m_ui->tiles()[tile]);
    if (tile >= 0)
        focusTile(tile);
}
