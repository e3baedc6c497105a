#include "ui/preview/device_player_view_ui.h"

#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTime>

#include <algorithm>

#include "render/video_surface.h"
#include "ui/palette.h"
#include "ui/preview/device_record_view.h"
#include "ui/preview/preview_keys.h"
#include "ui/preview/tutk_device_ptz_view.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/video_overlay.h"
#include "ui/widgets/widget_utils.h"
#include "ui/widgets/zoom_control.h"

using orvelle::PreviewKey;
using orvelle::textKey;

namespace {

constexpr int kDateTimeIntervalMs = 1000;
/// A picture at the pace of the slowest camera comes before this.
constexpr int kSpeedDelayMs = 250;
constexpr int kQualityWidth = 36;  // of the button's 24 pixels' height
constexpr int kButtonSize = 24;
constexpr int kMinButtonSize = 14;
constexpr int kLabelGap = 12;
constexpr int kMinNameWidth = 48;
constexpr int kRounding = 2;  // a text that just fits is not to be elided
constexpr int kMaxPtzSize = 160;
constexpr int kInset = 8;
constexpr int kDotSize = 8;
constexpr int kDotGap = 6;
constexpr int kSliderWidth = 80;
constexpr int kMinSliderWidth = 48;
constexpr int kSliderHeight = 20;

/// The bit rate's label for tiles that are at least so wide, as distances from the picture's
/// corner. The last one is as wide as its text.
struct SpeedPlace {
    int tileWidth;
    QRect place;
    int fontPixels;
};
constexpr std::array kSpeedPlaces{
    SpeedPlace{480, QRect(-85, -35, 80, 30), orvelle::palette::kFontPixels},
    SpeedPlace{280, QRect(-71, -27, 66, 22), orvelle::palette::kSmallFontPixels},
    SpeedPlace{0, QRect(-5, -20, 0, 16), 10},
};
constexpr int kSpeedPadding = 4;

const SpeedPlace& speedPlaceFor(int tileWidth) {
    const auto* const last = kSpeedPlaces.end() - 1;
    return *std::find_if(kSpeedPlaces.begin(), last, [tileWidth](const SpeedPlace& place) {
        return tileWidth >= place.tileWidth;
    });
}

constexpr char kSliderStyle[] =
    "QSlider{background:transparent;}"
    "QSlider::groove:horizontal{height:4px;border-radius:2px;background:#7a7877;}"
    "QSlider::sub-page:horizontal{height:4px;border-radius:2px;background:#19a4ff;}"
    "QSlider::sub-page:horizontal:disabled{background:#7a7877;}"
    "QSlider::handle:horizontal{width:12px;margin:-4px 0;border-radius:6px;background:#ffffff;}"
    "QSlider::handle:horizontal:disabled{background:#a8a6a5;}";

int textWidth(const QLabel& label) {
    return label.fontMetrics().horizontalAdvance(label.text());
}

}  // namespace

struct KvDevicePlayerViewUI::Measures {
    int barHeight;
    int buttonSize;
    int gap;
    int margin;
    int fontPixels;

    int widthOf(Button button) const {
        return button == kQuality ? buttonSize * kQualityWidth / kButtonSize : buttonSize;
    }
};

KvDevicePlayerViewUI::KvDevicePlayerViewUI(QWidget* tile)
    : QWidget(tile),
      m_overlay(new orvelle::VideoOverlay(tile, this)),
      m_zoom(new orvelle::ZoomControl(this)),
      m_badge(new orvelle::TileBadge(this)),
      m_speedLabel(new QLabel(this)),
      m_ptzView(new KvTUTKDevicePTZView(this)),
      m_topBar(new KvWidget(this)),
      m_dot(new KvWidget(m_topBar)),
      m_nameLabel(new QLabel(m_topBar)),
      m_stateLabel(new QLabel(m_topBar)),
      m_dateTimeLabel(new QLabel(m_topBar)),
      m_bottomBar(new KvWidget(this)),
      m_volumeSlider(nullptr),
      m_recordView(new KvDeviceRecordView(this)) {
    m_shown.fill(true);
    m_shown.at(kPtz) = m_shown.at(kQuality) = false;
    m_ptzView->setAccessibleName(orvelle::text("platform"));
    m_ptzView->hide();
    m_recordView->hide();
    setUpLabels();
    setUpButtons();
    setUpOverlay();
    m_dateTimeTimer.setInterval(kDateTimeIntervalMs);
    connect(&m_dateTimeTimer, &QTimer::timeout, this, &KvDevicePlayerViewUI::_invokeDateTimeTimer);
    _invokeDateTimeTimer();
    // A label's own repaint would make the toolkit compose the whole window once more.
    m_speedTimer.setSingleShot(true);
    m_speedTimer.setInterval(kSpeedDelayMs);
    connect(&m_speedTimer, &QTimer::timeout, this, &KvDevicePlayerViewUI::applySpeedText);
}

void KvDevicePlayerViewUI::setUpOverlay() {
    for (KvWidget* bar : {m_topBar, m_bottomBar})
        bar->setBackgroundColor(QColor(QLatin1String(orvelle::palette::kBar)));
    m_dot->setBorder(0, kDotSize / 2);
    m_overlay->setParts({m_badge, m_speedLabel, m_topBar, m_bottomBar, m_recordView, m_ptzView},
                        {m_topBar, m_bottomBar});
    m_recordView->setAttribute(Qt::WA_NoMousePropagation);
    m_overlay->keepBarsFor(m_recordView);
    connect(m_overlay, &orvelle::VideoOverlay::barsChanged, this,
            &KvDevicePlayerViewUI::onBarsChanged);
    connect(m_zoom, &orvelle::ZoomControl::changed, this, [this](double factor) {
        orvelle::TileBadge::Facts facts = m_badge->facts();
        facts.zoom = factor;
        showBadge(facts);
    });
}

orvelle::PictureNotice* KvDevicePlayerViewUI::notice() const {
    return m_overlay->notice();
}

orvelle::VideoSurface* KvDevicePlayerViewUI::videoView() {
    if (m_videoView)
        return m_videoView;
    m_videoView = orvelle::makeVideoSurface(this);
    m_videoView->widget().setGeometry(rect());
    m_videoView->widget().lower();
    m_videoView->widget().show();
    m_zoom->setSurface(m_videoView);
    m_videoView->addRepaintHook([this] {
        if (m_speedTimer.isActive())
            applySpeedText();
        if (!m_recordView->isHidden())
            m_recordView->setTime(m_recordSeconds);
    });
    return m_videoView;
}

void KvDevicePlayerViewUI::blankPicture() {
    if (m_videoView)
        m_videoView->showNothing();
}

void KvDevicePlayerViewUI::setUpLabels() {
    for (QLabel* label : {m_nameLabel, m_stateLabel, m_dateTimeLabel}) {
        label->setStyleSheet(QStringLiteral("QLabel{color:rgb(255, 255, 255);}"));
        label->setTextFormat(Qt::PlainText);
    }
    m_speedLabel->setStyleSheet(
        QStringLiteral("QLabel{color:#ffffff;background:#00a7f9;border-radius:5px;};"));
    m_speedLabel->setAlignment(Qt::AlignCenter);
    m_speedLabel->setTextFormat(Qt::PlainText);
    m_speedLabel->hide();
}

KvPushButton* KvDevicePlayerViewUI::makeButton(QWidget* bar, const char* name, const char* key) {
    auto* button = new KvPushButton(bar);
    KvWidgetUtils::setUpImageButton(button, QLatin1String(name), key);
    // A click must not take the keys away from the tile.
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

void KvDevicePlayerViewUI::setUpSlider() {
    m_volumeSlider = new QSlider(Qt::Horizontal, m_bottomBar);
    m_volumeSlider->setRange(0, 100);
    m_volumeSlider->setPageStep(10);
    m_volumeSlider->setStyleSheet(QLatin1String(kSliderStyle));
    m_volumeSlider->setFocusPolicy(Qt::TabFocus);
    KvWidgetUtils::setToolTip(m_volumeSlider, "volume");
}

void KvDevicePlayerViewUI::setUpButtons() {
    m_buttons[kSdCard] = makeButton(m_topBar, "sd", textKey("sdcard"));
    m_buttons[kSettings] = makeButton(m_topBar, "setting", textKey("settings"));
    m_buttons[kClose] = makeButton(m_topBar, "shutdown", textKey("close"));
    m_buttons[kPlay] = makeButton(m_bottomBar, "play", textKey("pause"));
    m_buttons[kSound] = makeButton(m_bottomBar, "voice", textKey("sound"));
    setUpSlider();
    m_buttons[kQuality] = new KvPushButton(m_bottomBar);
    m_buttons[kRecord] = makeButton(m_bottomBar, "video", textKey("record_video"));
    m_buttons[kCapture] = makeButton(m_bottomBar, "capture", textKey("screenshot"));
    m_buttons[kPtz] = makeButton(m_bottomBar, "platform", textKey("platform"));
    m_buttons[kFullscreen] = makeButton(m_bottomBar, "fullscreen", textKey("maximized"));
    m_buttons[kQuality]->setFocusPolicy(Qt::NoFocus);
    m_buttons[kQuality]->setCursor(Qt::ArrowCursor);

    const auto setImages = [this](Button button, const char* unchecked, const char* checked) {
        m_buttons[button]->setImages(KvWidgetUtils::imagesOf(QLatin1String(unchecked)),
                                     KvWidgetUtils::imagesOf(QLatin1String(checked)));
    };
    setImages(kPlay, "play", "suspend");
    setImages(kSound, "voice", "voiceoff");
    setImages(kFullscreen, "fullscreen", "cancel_fullscreen");

    // What is switched on has the colour of the layout that is chosen.
    const auto lit = [](const char* name) {
        orvelle::ButtonImages images = KvWidgetUtils::imagesOf(QLatin1String(name));
        images.normal = images.hover;
        return images;
    };
    m_buttons[kRecord]->setImages(lit("video"), KvWidgetUtils::imagesOf(QStringLiteral("video")));
    m_buttons[kRecord]->setState(1);
    m_buttons[kPtz]->setImages(KvWidgetUtils::imagesOf(QStringLiteral("platform")),
                               lit("platform"));
    setTip(kCapture, textKey("screenshot"), PreviewKey::kSnapshot);
}

void KvDevicePlayerViewUI::setTip(Button id, const char* name, PreviewKey key) {
    orvelle::setKeyToolTip(m_buttons.at(id), name, key);
}

void KvDevicePlayerViewUI::setMode(int mode) {
    if (m_mode == mode)
        return;
    m_mode = mode;
    layOut();
}

void KvDevicePlayerViewUI::setName(const QString& name) {
    m_name = name;
    m_nameLabel->setToolTip(KvWidgetUtils::toolTipText(name));
    // Of the tile, which takes the focus.
    parentWidget()->setAccessibleName(name);
    orvelle::TileBadge::Facts facts = m_badge->facts();
    facts.name = name;
    showBadge(facts);
    layOut();
}

void KvDevicePlayerViewUI::setStateText(const QString& state, const QColor& dot) {
    const bool isNew = m_stateLabel->text() != state;
    m_stateLabel->setText(state);
    m_dot->setBackgroundColor(dot);
    orvelle::TileBadge::Facts facts = m_badge->facts();
    facts.dot = dot;
    showBadge(facts);
    if (isNew)
        layOut();
}

void KvDevicePlayerViewUI::setRecorded(bool isRecorded) {
    orvelle::TileBadge::Facts facts = m_badge->facts();
    facts.isRecorded = isRecorded;
    showBadge(facts);
}

void KvDevicePlayerViewUI::setHeard(bool isHeard) {
    orvelle::TileBadge::Facts facts = m_badge->facts();
    facts.isHeard = isHeard;
    showBadge(facts);
}

/// A reader of the screen is told the same by the tile itself.
void KvDevicePlayerViewUI::showBadge(const orvelle::TileBadge::Facts& facts) {
    m_badge->setFacts(facts);
    QStringList words{m_stateLabel->text()};
    if (facts.isRecorded)
        words << orvelle::text("is_being_recorded");
    if (facts.isHeard)
        words << orvelle::text("sound_is_on");
    parentWidget()->setAccessibleDescription(words.join(QStringLiteral(", ")));
    placeBadge();
}

void KvDevicePlayerViewUI::onBarsChanged(bool areShown) {
    placeRecordView();
    if (areShown) {
        _invokeDateTimeTimer();
        m_dateTimeTimer.start();
    } else {
        m_dateTimeTimer.stop();
    }
    placeBadge();
    placeSpeedLabel();
}

void KvDevicePlayerViewUI::setButtonShown(Button button, bool shown) {
    if (m_shown.at(button) == shown)
        return;
    m_shown.at(button) = shown;
    layOut();
}

void KvDevicePlayerViewUI::setButtonEnabled(Button id, bool enabled) {
    KvPushButton* button = m_buttons.at(id);
    if (button->isEnabledTo(this) == enabled)
        return;
    // Also behind a dialog, from which the focus comes back here.
    if (window()->focusWidget() == button)
        parentWidget()->setFocus(Qt::OtherFocusReason);
    button->setEnabled(enabled);
    button->setCursor(enabled ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void KvDevicePlayerViewUI::setQualityImage(const QString& name) {
    const orvelle::ButtonImages images{KvWidgetUtils::image(name), {}, {}, {}};
    m_buttons[kQuality]->setImages(images, images);
}

void KvDevicePlayerViewUI::setSpeedText(const QString& text) {
    m_speedText = text;
    if (text.isEmpty())
        applySpeedText();
    else if (!m_speedTimer.isActive())
        m_speedTimer.start();
}

void KvDevicePlayerViewUI::applySpeedText() {
    m_speedTimer.stop();
    m_speedLabel->setText(m_speedText);
    m_speedLabel->setVisible(!m_speedText.isEmpty());
    placeSpeedLabel();
}

void KvDevicePlayerViewUI::setRecordShown(bool shown) {
    // Else the toolkit hands the focus to the next widget, wherever that is.
    if (!shown && m_recordView->isAncestorOf(window()->focusWidget()))
        parentWidget()->setFocus(Qt::OtherFocusReason);
    m_recordSeconds = 0.0;
    m_recordView->setTime(m_recordSeconds);
    m_recordView->setVisible(shown);
}

void KvDevicePlayerViewUI::setRecordTime(double seconds, bool isPictureMoving) {
    m_recordSeconds = seconds;
    if (!isPictureMoving)
        m_recordView->setTime(seconds);
}

void KvDevicePlayerViewUI::_invokeDateTimeTimer() {
    m_dateTimeLabel->setText(QTime::currentTime().toString(QStringLiteral("HH:mm:ss")));
}

void KvDevicePlayerViewUI::resizeEvent(QResizeEvent*) {
    layOut();
}

KvDevicePlayerViewUI::Measures KvDevicePlayerViewUI::measures() const {
    using namespace orvelle::palette;
    if (m_mode == kLarge)
        return {44, kButtonSize, 16, 14, kFontPixels};
    // The bottom bar is the fuller one; what does not fit shrinks.
    constexpr int kGaps = 6;
    constexpr int kMargin = 8;
    Measures compact{32, kButtonSize, 10, kMargin, kSmallFontPixels};
    const int free = width() - 2 * kMargin - 6 * kButtonSize - kQualityWidth;
    compact.gap = qBound(3, free / kGaps, 10);
    if (free < kGaps * compact.gap)
        compact.buttonSize =
            qMax(kMinButtonSize, (width() - 2 * kMargin - kGaps * compact.gap) * kButtonSize /
                                     (6 * kButtonSize + kQualityWidth));
    return compact;
}

void KvDevicePlayerViewUI::layOut() {
    const Measures now = measures();
    if (m_videoView)
        m_videoView->widget().setGeometry(rect());
    m_overlay->layOut();
    for (QLabel* label : {m_nameLabel, m_stateLabel, m_dateTimeLabel})
        KvWidgetUtils::setFont(label, now.fontPixels);
    KvWidgetUtils::setFont(m_speedLabel, speedPlaceFor(width()).fontPixels);
    notice()->setFontPixels(now.fontPixels);
    m_topBar->setGeometry(0, 0, width(), now.barHeight);
    m_bottomBar->setGeometry(0, height() - now.barHeight, width(), now.barHeight);
    layOutTopBar(now);
    layOutBottomBar(now);

    placeRecordView();
    const int ptz = qMin(kMaxPtzSize, height() - 2 * now.barHeight - kInset);
    m_ptzView->setGeometry(kInset, (height() - ptz) / 2, ptz, ptz);
    placeBadge();
    placeSpeedLabel();
}

/// The bar, where it is shown, says the same.
void KvDevicePlayerViewUI::placeBadge() {
    // Its dot and name are where the bar has them.
    const Measures now = measures();
    const QPoint place(now.margin - orvelle::TileBadge::kMargin,
                       (now.barHeight - m_badge->height()) / 2);
    m_badge->setMaxWidth(width() - 2 * place.x());
    m_badge->move(place);
    m_badge->setVisible(!m_badge->facts().name.isEmpty() && !m_overlay->areBarsShown());
}

void KvDevicePlayerViewUI::placeRecordView() {
    m_recordView->setButtonsVisible(m_overlay->areBarsShown());
    const QSize size = m_recordView->sizeWithin(width() - 2 * kInset);
    m_recordView->setGeometry(
        QRect(QPoint((width() - size.width()) / 2, measures().barHeight + kInset), size));
}

int KvDevicePlayerViewUI::placeFromRight(std::initializer_list<Button> buttons, int right,
                                         const Measures& measures) {
    for (const Button id : buttons) {
        m_buttons.at(id)->setVisible(m_shown.at(id));
        if (!m_shown.at(id))
            continue;
        const int width = measures.widthOf(id);
        m_buttons.at(id)->setGeometry(right - width, (measures.barHeight - measures.buttonSize) / 2,
                                      width, measures.buttonSize);
        right -= width + measures.gap;
    }
    return right;
}

/// The name gives way to the state, and that to nothing: in a narrow tile the name stands alone.
void KvDevicePlayerViewUI::layOutTopBar(const Measures& measures) {
    const int right =
        placeFromRight({kClose, kSettings, kSdCard}, width() - measures.margin, measures);
    const int nameWidth = m_nameLabel->fontMetrics().horizontalAdvance(m_name) + kRounding;
    m_dot->setGeometry(measures.margin, (measures.barHeight - kDotSize) / 2, kDotSize, kDotSize);
    int left = measures.margin + kDotSize + kDotGap;
    int free = right - left;
    QVector<QLabel*> further;
    for (QLabel* label : {m_stateLabel, m_dateTimeLabel}) {
        const int needed = textWidth(*label) + kLabelGap;
        label->setVisible(free - needed >= qMax(nameWidth, kMinNameWidth));
        if (label->isVisibleTo(m_topBar)) {
            free -= needed;
            further << label;
        }
    }
    const int shownWidth = qBound(0, free, nameWidth);
    m_nameLabel->setText(m_nameLabel->fontMetrics().elidedText(m_name, Qt::ElideRight, shownWidth));
    m_nameLabel->setGeometry(left, 0, shownWidth, measures.barHeight);
    left += shownWidth + kLabelGap;
    for (QLabel* label : further) {
        label->setGeometry(left, 0, textWidth(*label), measures.barHeight);
        left += label->width() + kLabelGap;
    }
}

int KvDevicePlayerViewUI::placeButton(Button id, int left, const Measures& measures) {
    m_buttons.at(id)->setVisible(m_shown.at(id));
    if (!m_shown.at(id))
        return left;
    m_buttons.at(id)->setGeometry(left, (measures.barHeight - measures.buttonSize) / 2,
                                  measures.widthOf(id), measures.buttonSize);
    return left + measures.widthOf(id) + measures.gap;
}

/// The slider takes what is left between the two groups of buttons, if that is enough.
void KvDevicePlayerViewUI::layOutBottomBar(const Measures& measures) {
    const int right =
        placeFromRight({kFullscreen, kPtz, kCapture, kRecord}, width() - measures.margin, measures);
    int left = placeButton(kPlay, measures.margin, measures);
    left = placeButton(kSound, left, measures);
    const int quality = m_shown.at(kQuality) ? measures.widthOf(kQuality) + measures.gap : 0;
    const int slider = qMin(kSliderWidth, right - left - quality - measures.gap);
    m_volumeSlider->setVisible(slider >= kMinSliderWidth);
    if (slider >= kMinSliderWidth) {
        m_volumeSlider->setGeometry(left, (measures.barHeight - kSliderHeight) / 2, slider,
                                    kSliderHeight);
        left += slider + measures.gap;
    }
    placeButton(kQuality, left, measures);
}

void KvDevicePlayerViewUI::placeSpeedLabel() {
    double scaleX = 1.0;
    double scaleY = 1.0;
    if (m_videoView)
        m_videoView->pictureScale(&scaleX, &scaleY);
    const QRect video = rect();
    QPoint corner(static_cast<int>(video.x() + video.width() * (scaleX * 0.5 + 0.5)),
                  static_cast<int>(video.y() + video.height() * (scaleY * 0.5 + 0.5)));
    if (m_overlay->areBarsShown())
        corner.setY(qMin(corner.y(), m_bottomBar->y()));
    QRect place = speedPlaceFor(width()).place;
    if (place.isEmpty())
        place.setLeft(place.left() - textWidth(*m_speedLabel) - 2 * kSpeedPadding);
    place.translate(corner);
    if (m_speedLabel->geometry() != place)
        m_speedLabel->setGeometry(place);
}
