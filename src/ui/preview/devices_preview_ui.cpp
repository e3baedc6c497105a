#include "ui/preview/devices_preview_ui.h"

#include <QLabel>

#include <algorithm>
#include <iterator>

#include "ui/info/device_info_view.h"
#include "ui/palette.h"
#include "ui/playback/sdcard_playback_view.h"
#include "ui/preview/device_player_view.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr int kBarHeight = 40;
constexpr int kButtonSize = 24;
constexpr int kButtonGap = 16;
constexpr int kMargin = 14;

/// By layout index, each with the order of its button in the row.
struct LayoutButton {
    const char* image;
    int place;
};
constexpr std::array<LayoutButton, KvDevicesPreviewUI::kLayoutButtons> kButtons{{
    {"layout1x1", 0},
    {"layout2x2", 1},
    {"layout3x3", 3},
    {"layout6", 2},
    {"layout13", 4},
    {"layout4x4", 5},
}};

/// Buttons that cannot be told by a word are told by the number of their pictures.
QString tileCountText(int layout) {
    return QString::number(orvelle::tileCount(layout));
}

}  // namespace

KvDevicesPreviewUI::KvDevicesPreviewUI(QWidget* parent)
    : KvWidget(parent), m_bar(nullptr), m_title(nullptr) {
    setBackgroundColor(0x000000, 255);
    for (int i = 0; i < orvelle::kMaxTiles; ++i) {
        m_tiles.push_back(new KvDevicePlayerView(this));
        m_tiles.back()->hide();
    }
    m_bar = new KvWidget(this);
    m_title = new QLabel(m_bar);
    setUpBar();
    m_infoView = new KvTUTKDeviceInfoView(this);
    m_playbackView = new KvSDCardPlaybackView(this);
    hidePage(m_infoView);
    hidePage(m_playbackView);
    setLayoutIndex(orvelle::kGrid1x1);
}

void KvDevicesPreviewUI::setUpBar() {
    m_bar->setBackgroundColor(QColor(QLatin1String(orvelle::palette::kBar)));
    m_title->setTextFormat(Qt::PlainText);
    m_title->setStyleSheet(KvWidgetUtils::labelColorStyle(0xffffff));
    KvWidgetUtils::setFont(m_title, orvelle::palette::kFontPixels);
    for (int place = 0; place < kLayoutButtons; ++place) {
        for (int layout = 0; layout < kLayoutButtons; ++layout) {
            if (kButtons.at(layout).place != place)
                continue;
            auto* button = new KvPushButton(m_bar);
            const QString image = QLatin1String(kButtons.at(layout).image);
            const orvelle::ButtonImages images = KvWidgetUtils::imagesOf(image);
            button->setImages({images.normal, {}, images.pressed, {}},
                              {images.pressed, {}, {}, {}});
            button->setToolTip(tileCountText(layout));
            button->setAccessibleName(tileCountText(layout));
            m_layoutButtons.at(layout) = button;
        }
    }
}

KvPushButton* KvDevicesPreviewUI::layoutButton(int layout) const {
    return m_layoutButtons.at(layout);
}

void KvDevicesPreviewUI::setLayoutIndex(int index) {
    m_layoutIndex = index;
    for (int layout = 0; layout < kLayoutButtons; ++layout)
        m_layoutButtons.at(layout)->setState(layout == index ? 1 : 0);
    layOut();
}

void KvDevicesPreviewUI::moveToFront(const std::vector<KvDevicePlayerView*>& tiles) {
    std::vector<KvDevicePlayerView*> order = tiles;
    std::copy_if(m_tiles.begin(), m_tiles.end(), std::back_inserter(order),
                 [&tiles](KvDevicePlayerView* tile) {
                     return std::find(tiles.begin(), tiles.end(), tile) == tiles.end();
                 });
    m_tiles = std::move(order);
}

void KvDevicesPreviewUI::setFullscreenTile(KvDevicePlayerView* tile) {
    if (m_fullscreenTile == tile)
        return;
    m_fullscreenTile = tile;
    for (KvDevicePlayerView* each : m_tiles)
        each->setFullscreen(each == tile);
    layOut();
}

void KvDevicesPreviewUI::setTitle(const QString& title) {
    m_titleText = title;
    m_title->setToolTip(KvWidgetUtils::toolTipText(title));
    layOutBar();
}

void KvDevicesPreviewUI::place(KvDevicePlayerView* tile, const QRect& area, int controlMode) {
    tile->setControlMode(controlMode);
    tile->setGeometry(area);
    tile->setVisible(tile->device() && !isPageShown());
}

void KvDevicesPreviewUI::layOut() {
    m_bar->setVisible(!m_fullscreenTile);
    layOutBar();
    using UI = KvDevicePlayerViewUI;
    if (m_fullscreenTile) {
        place(m_fullscreenTile, rect(), UI::kLarge);
        for (KvDevicePlayerView* tile : m_tiles)
            tile->setVisible(tile == m_fullscreenTile && !isPageShown());
        return;
    }
    const std::vector<QRect> places =
        orvelle::tilePlaces(m_layoutIndex, {width(), height() - kBarHeight});
    m_tilesShown = static_cast<int>(places.size());
    const int mode = m_layoutIndex == orvelle::kGrid1x1 ? UI::kLarge : UI::kCompact;
    for (size_t i = 0; i < m_tiles.size(); ++i) {
        if (i < places.size())
            place(m_tiles[i], places[i], mode);
        else
            m_tiles[i]->hide();
    }
}

void KvDevicesPreviewUI::layOutBar() {
    m_bar->setGeometry(0, height() - kBarHeight, width(), kBarHeight);
    const int rowWidth = kLayoutButtons * (kButtonSize + kButtonGap) - kButtonGap;
    const int left = width() - kMargin - rowWidth;
    for (int layout = 0; layout < kLayoutButtons; ++layout)
        m_layoutButtons.at(layout)->setGeometry(
            left + kButtons.at(layout).place * (kButtonSize + kButtonGap),
            (kBarHeight - kButtonSize) / 2, kButtonSize, kButtonSize);
    const int titleWidth = qMax(0, left - 2 * kMargin);
    m_title->setGeometry(kMargin, 0, titleWidth, kBarHeight);
    m_title->setText(m_title->fontMetrics().elidedText(m_titleText, Qt::ElideRight, titleWidth));
}

void KvDevicesPreviewUI::showPage(QWidget* page) {
    setGridEnabled(false);
    page->setGeometry(rect());
    page->show();
    page->raise();
    layOut();
    page->setFocus(Qt::OtherFocusReason);
}

void KvDevicesPreviewUI::hidePage(QWidget* page) {
    page->clearFocus();
    page->hide();
    page->setGeometry(QRect());
    setGridEnabled(!isPageShown());
    layOut();
}

bool KvDevicesPreviewUI::isPageShown() const {
    return !m_infoView->isHidden() || !m_playbackView->isHidden();
}

/// What a page covers is out of the keyboard's reach as well.
void KvDevicesPreviewUI::setGridEnabled(bool enabled) {
    for (KvDevicePlayerView* tile : m_tiles)
        tile->setEnabled(enabled);
    m_bar->setEnabled(enabled);
}

void KvDevicesPreviewUI::showDragLabel(const QPixmap& pixmap, const QPoint& centre) {
    removeDragLabel();
    m_dragLabel = new QLabel(this);
    m_dragLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_dragLabel->setPixmap(pixmap);
    m_dragLabel->resize(pixmap.size());
    moveDragLabel(centre);
    m_dragLabel->show();
}

void KvDevicesPreviewUI::moveDragLabel(const QPoint& centre) {
    if (m_dragLabel)
        m_dragLabel->move(centre.x() - m_dragLabel->width() / 2,
                          centre.y() - m_dragLabel->height() / 2);
}

void KvDevicesPreviewUI::removeDragLabel() {
    delete m_dragLabel;
    m_dragLabel = nullptr;
}

void KvDevicesPreviewUI::resizeEvent(QResizeEvent*) {
    layOut();
    for (QWidget* page : {static_cast<QWidget*>(m_infoView), static_cast<QWidget*>(m_playbackView)})
        if (!page->isHidden())
            page->setGeometry(rect());
}
