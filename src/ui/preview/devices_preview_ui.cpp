#include "ui/preview/devices_preview_ui.h"

#include <QLabel>
#include <QPainter>

#include <algorithm>
#include <iterator>

#include "ui/info/device_info_view.h"
#include "ui/palette.h"
#include "ui/playback/sdcard_playback_view.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/preview_keys.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr int kBarHeight = 40;
constexpr int kButtonSize = 24;
constexpr int kButtonGap = 16;
constexpr int kMargin = 14;
constexpr QColor kGutterColour(0x24, 0x24, 0x24);
constexpr QColor kEmptyColour(0x12, 0x12, 0x12);
constexpr int kHalfGutter = 1;

/// By layout index, each with the order of its button in the row.
struct LayoutButton {
    const char* image;
    int place;
    const char* name;
};
constexpr std::array<LayoutButton, KvDevicesPreviewUI::kLayoutButtons> kButtons{{
    {"layout1x1", 0, orvelle::textKey("one_picture")},
    {"layout2x2", 1, orvelle::textKey("four_pictures")},
    {"layout3x3", 3, orvelle::textKey("nine_pictures")},
    {"layout6", 2, orvelle::textKey("six_pictures")},
    {"layout13", 4, orvelle::textKey("thirteen_pictures")},
    {"layout4x4", 5, orvelle::textKey("sixteen_pictures")},
}};

}  // namespace

KvDevicesPreviewUI::KvDevicesPreviewUI(QWidget* parent)
    : KvWidget(parent), m_bar(nullptr), m_title(nullptr) {
    setBackgroundColor(kGutterColour);
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
        const int layout = layoutAt(place);
        auto* button = new KvPushButton(m_bar);
        const QString image = QLatin1String(kButtons.at(layout).image);
        const orvelle::ButtonImages images = KvWidgetUtils::imagesOf(image);
        button->setImages({images.normal, {}, images.pressed, {}}, {images.pressed, {}, {}, {}});
        orvelle::setKeyToolTip(
            button, kButtons.at(layout).name,
            static_cast<orvelle::PreviewKey>(int(orvelle::PreviewKey::kLayout1) + place));
        m_layoutButtons.at(layout) = button;
    }
    m_wholeGridButton = new KvPushButton(m_bar);
    m_wholeGridButton->setImages(KvWidgetUtils::imagesOf(QStringLiteral("fullscreen")));
    orvelle::setKeyToolTip(m_wholeGridButton, "full_screen_of_all_pictures",
                           orvelle::PreviewKey::kWholeGrid);
}

int KvDevicesPreviewUI::layoutAt(int place) {
    const auto button = std::find_if(kButtons.begin(), kButtons.end(),
                                     [place](const auto& each) { return each.place == place; });
    return static_cast<int>(button - kButtons.begin());
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

void KvDevicesPreviewUI::setSingleTile(KvDevicePlayerView* tile) {
    if (m_singleTile == tile)
        return;
    m_singleTile = tile;
    layOut();
}

void KvDevicesPreviewUI::setGridFullscreen(bool fullscreen) {
    if (m_isGridFullscreen == fullscreen)
        return;
    m_isGridFullscreen = fullscreen;
    for (KvDevicePlayerView* tile : m_tiles)
        tile->setFullscreen(fullscreen);
    layOut();
}

int KvDevicesPreviewUI::neighbour(int tile, orvelle::GridDirection direction) const {
    return orvelle::neighbourOf(m_places, tile, direction);
}

void KvDevicesPreviewUI::setTitle(const QString& title) {
    m_titleText = title;
    m_title->setToolTip(KvWidgetUtils::toolTipText(title));
    layOutBar();
}

void KvDevicesPreviewUI::place(KvDevicePlayerView* tile, const QRect& area, int controlMode,
                               int inset) {
    tile->setControlMode(controlMode);
    tile->setInset(inset);
    tile->setGeometry(area);
    tile->setVisible(tile->device() && !isPageShown());
}

void KvDevicesPreviewUI::placeAlone(KvDevicePlayerView* tile) {
    const int barHeight = m_bar->isHidden() ? 0 : kBarHeight;
    place(tile, rect().adjusted(0, 0, 0, -barHeight), KvDevicePlayerViewUI::kLarge, 0);
    for (KvDevicePlayerView* other : m_tiles)
        other->setVisible(other == tile && !isPageShown());
}

void KvDevicesPreviewUI::layOut() {
    using UI = KvDevicePlayerViewUI;
    m_bar->setVisible(!m_fullscreenTile && !m_isGridFullscreen);
    layOutBar();
    const int barHeight = m_bar->isHidden() ? 0 : kBarHeight;
    m_places = orvelle::tilePlaces(m_layoutIndex, {width(), height() - barHeight});
    m_tilesShown = static_cast<int>(m_places.size());
    if (KvDevicePlayerView* alone = m_fullscreenTile ? m_fullscreenTile : m_singleTile) {
        placeAlone(alone);
        return;
    }
    const bool isSingle = m_tilesShown == 1;
    for (size_t i = 0; i < m_tiles.size(); ++i) {
        if (i < m_places.size())
            place(m_tiles[i], m_places[i], isSingle ? UI::kLarge : UI::kCompact,
                  isSingle ? 0 : kHalfGutter);
        else
            m_tiles[i]->hide();
    }
    update();
}

/// Places without a camera look like places.
void KvDevicesPreviewUI::paintEvent(QPaintEvent* event) {
    KvWidget::paintEvent(event);
    if (m_fullscreenTile || m_singleTile)
        return;
    QPainter painter(this);
    for (size_t i = 0; i < m_places.size(); ++i) {
        if (!m_tiles[i]->device())
            painter.fillRect(
                m_places[i].adjusted(kHalfGutter, kHalfGutter, -kHalfGutter, -kHalfGutter),
                kEmptyColour);
    }
}

void KvDevicesPreviewUI::layOutBar() {
    m_bar->setGeometry(0, height() - kBarHeight, width(), kBarHeight);
    const int rowWidth = kLayoutButtons * (kButtonSize + kButtonGap) - kButtonGap;
    const int top = (kBarHeight - kButtonSize) / 2;
    m_wholeGridButton->setGeometry(width() - kMargin - kButtonSize, top, kButtonSize, kButtonSize);
    const int left = m_wholeGridButton->x() - 2 * kButtonGap - rowWidth;
    for (int layout = 0; layout < kLayoutButtons; ++layout)
        m_layoutButtons.at(layout)->setGeometry(
            left + kButtons.at(layout).place * (kButtonSize + kButtonGap), top, kButtonSize,
            kButtonSize);
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

void KvDevicesPreviewUI::resizeEvent(QResizeEvent*) {
    layOut();
    for (QWidget* page : {static_cast<QWidget*>(m_infoView), static_cast<QWidget*>(m_playbackView)})
        if (!page->isHidden())
            page->setGeometry(rect());
}
