#include "ui/preview/device_player_view_ui.h"

#include <QLabel>
#include <QPushButton>
#include <QTime>

#include "render/video_surface.h"
#include "ui/palette.h"
#include "ui/preview/device_record_view.h"
#include "ui/preview/tutk_device_ptz_view.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

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
constexpr QSize kNoticePadding(12, 6);
constexpr QSize kCodePadding(14, 7);
constexpr int kCodeGap = 8;
// The bit rate's distances from the corner of the picture.
constexpr QRect kSpeedPlace(-85, -35, 80, 30);
constexpr QRect kCompactSpeedPlace(-71, -27, 66, 22);

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
      m_noticeLabel(new QLabel(this)),
      m_codeButton(new QPushButton(orvelle::text("enter_new_code"), this)),
      m_speedLabel(new QLabel(this)),
      m_ptzView(new KvTUTKDevicePTZView(this)),
      m_topBar(new KvWidget(this)),
      m_nameLabel(new QLabel(m_topBar)),
      m_stateLabel(new QLabel(m_topBar)),
      m_dateTimeLabel(new QLabel(m_topBar)),
      m_bottomBar(new KvWidget(this)),
      m_recordView(new KvDeviceRecordView(this)) {
    m_shown.fill(true);
    m_shown.at(kPtz) = m_shown.at(kQuality) = false;
    for (KvWidget* bar : {m_topBar, m_bottomBar}) {
        bar->setBackgroundColor(QColor(QLatin1String(orvelle::palette::kBar)));
        bar->hide();
    }
    // A double click on them is none on the picture.
    for (QWidget* part : {static_cast<QWidget*>(m_topBar), static_cast<QWidget*>(m_bottomBar),
                          static_cast<QWidget*>(m_recordView)})
        part->setAttribute(Qt::WA_NoMousePropagation);
    m_ptzView->setAccessibleName(orvelle::text("platform"));
    m_ptzView->hide();
    m_recordView->hide();
    setUpLabels();
    setUpButtons();
    m_dateTimeTimer.setInterval(kDateTimeIntervalMs);
    connect(&m_dateTimeTimer, &QTimer::timeout, this, &KvDevicePlayerViewUI::_invokeDateTimeTimer);
    _invokeDateTimeTimer();
    // A label's own repaint would make the toolkit compose the whole window once more.
    m_speedTimer.setSingleShot(true);
    m_speedTimer.setInterval(kSpeedDelayMs);
    connect(&m_speedTimer, &QTimer::timeout, this, &KvDevicePlayerViewUI::applySpeedText);
}

KvDevicePlayerViewUI::~KvDevicePlayerViewUI() {
    m_loadingView.hideOver();
}

orvelle::VideoSurface* KvDevicePlayerViewUI::videoView() {
    if (m_videoView)
        return m_videoView;
    m_videoView = orvelle::makeVideoSurface(this);
    m_videoView->widget().setGeometry(rect());
    m_videoView->widget().lower();
    m_videoView->widget().show();
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
    m_noticeLabel->setStyleSheet(QStringLiteral(
        "QLabel{background-color:rgba(0, 0, 0, 64);border-radius:10px;color:#ffffff;};"));
    for (QLabel* label : {m_speedLabel, m_noticeLabel}) {
        KvWidgetUtils::setFont(label, orvelle::palette::kFontPixels);
        label->setAlignment(Qt::AlignCenter);
        label->setTextFormat(Qt::PlainText);
        label->hide();
    }
    m_noticeLabel->setWordWrap(true);
    m_codeButton->setStyleSheet(KvWidgetUtils::primaryButtonStyle());
    m_codeButton->setCursor(Qt::PointingHandCursor);
    m_codeButton->setFocusPolicy(Qt::TabFocus);
    m_codeButton->hide();
}

KvPushButton* KvDevicePlayerViewUI::makeButton(QWidget* bar, const char* name, const char* key) {
    auto* button = new KvPushButton(bar);
    KvWidgetUtils::setUpImageButton(button, QLatin1String(name), key);
    // A click must not take the keys away from the tile.
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

void KvDevicePlayerViewUI::setUpButtons() {
    m_buttons[kSdCard] = makeButton(m_topBar, "sd", textKey("sdcard"));
    m_buttons[kSettings] = makeButton(m_topBar, "setting", textKey("settings"));
    m_buttons[kClose] = makeButton(m_topBar, "shutdown", textKey("close"));
    m_buttons[kPlay] = makeButton(m_bottomBar, "play", textKey("pause"));
    m_buttons[kSound] = makeButton(m_bottomBar, "voice", textKey("sound"));
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
    layOut();
}

void KvDevicePlayerViewUI::setStateText(const QString& state) {
    if (m_stateLabel->text() == state)
        return;
    m_stateLabel->setText(state);
    layOut();
}

void KvDevicePlayerViewUI::setBarsVisible(bool visible) {
    if (m_barsVisible == visible)
        return;
    m_barsVisible = visible;
    m_topBar->setVisible(visible);
    m_bottomBar->setVisible(visible);
    placeRecordView();
    if (visible) {
        _invokeDateTimeTimer();
        m_dateTimeTimer.start();
    } else {
        m_dateTimeTimer.stop();
    }
    placeSpeedLabel();
}

bool KvDevicePlayerViewUI::hasFocusInBars() const {
    // The window's own, which is where the focus comes back to from a dialog.
    const QWidget* focused = window()->focusWidget();
    return m_topBar->isAncestorOf(focused) || m_bottomBar->isAncestorOf(focused) ||
           m_recordView->isAncestorOf(focused);
}

bool KvDevicePlayerViewUI::isMouseInBars() const {
    return KvWidgetUtils::isMouseIn(*m_topBar) || KvWidgetUtils::isMouseIn(*m_bottomBar);
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

void KvDevicePlayerViewUI::showCover(const QString& text) {
    m_loadingView.setText(text);
    if (m_loadingView.isOver())
        return;
    m_loadingView.showOver(this, rect());
    raiseControls();
}

void KvDevicePlayerViewUI::hideCover() {
    m_loadingView.hideOver();
}

void KvDevicePlayerViewUI::raiseControls() {
    for (QWidget* control :
         std::initializer_list<QWidget*>{m_noticeLabel, m_codeButton, m_speedLabel, m_topBar,
                                         m_bottomBar, m_recordView, m_ptzView})
        control->raise();
}

void KvDevicePlayerViewUI::setCodeOffered(bool offered) {
    // Else the toolkit hands the focus to the next widget, wherever that is.
    if (!offered && window()->focusWidget() == m_codeButton)
        parentWidget()->setFocus(Qt::OtherFocusReason);
    m_codeButton->setVisible(offered);
}

void KvDevicePlayerViewUI::showNotice(const QString& text, bool offersCode) {
    if (m_noticeLabel->text() != text)
        m_noticeLabel->setText(text);
    m_noticeLabel->setVisible(!text.isEmpty());
    setCodeOffered(offersCode);
    placeNotice();
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
    if (m_loadingView.isOver())
        m_loadingView.setGeometry(rect());
    for (QLabel* label : {m_nameLabel, m_stateLabel, m_dateTimeLabel})
        KvWidgetUtils::setFont(label, now.fontPixels);
    KvWidgetUtils::setFont(m_speedLabel, now.fontPixels);
    KvWidgetUtils::setFont(m_codeButton, now.fontPixels);
    m_topBar->setGeometry(0, 0, width(), now.barHeight);
    m_bottomBar->setGeometry(0, height() - now.barHeight, width(), now.barHeight);
    layOutTopBar(now);
    layOutBottomBar(now);

    placeRecordView();
    const int ptz = qMin(kMaxPtzSize, height() - 2 * now.barHeight - kInset);
    m_ptzView->setGeometry(kInset, (height() - ptz) / 2, ptz, ptz);
    placeSpeedLabel();
    placeNotice();
}

void KvDevicePlayerViewUI::placeRecordView() {
    m_recordView->setButtonsVisible(m_barsVisible);
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
    int left = measures.margin;
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

void KvDevicePlayerViewUI::layOutBottomBar(const Measures& measures) {
    placeFromRight({kFullscreen, kPtz, kCapture, kRecord}, width() - measures.margin, measures);
    const int leftWidth = 2 * measures.buttonSize + measures.widthOf(kQuality) + 2 * measures.gap;
    int right = measures.margin + leftWidth;
    if (!m_shown.at(kQuality))
        right -= measures.widthOf(kQuality) + measures.gap;
    placeFromRight({kQuality, kSound, kPlay}, right, measures);
}

void KvDevicePlayerViewUI::placeSpeedLabel() {
    double scaleX = 1.0;
    double scaleY = 1.0;
    if (m_videoView)
        m_videoView->pictureScale(&scaleX, &scaleY);
    const QRect video = rect();
    QPoint corner(static_cast<int>(video.x() + video.width() * (scaleX * 0.5 + 0.5)),
                  static_cast<int>(video.y() + video.height() * (scaleY * 0.5 + 0.5)));
    if (m_barsVisible)
        corner.setY(qMin(corner.y(), m_bottomBar->y()));
    const QRect place = (m_mode == kLarge ? kSpeedPlace : kCompactSpeedPlace).translated(corner);
    if (m_speedLabel->geometry() != place)
        m_speedLabel->setGeometry(place);
}

void KvDevicePlayerViewUI::placeNotice() {
    const QFontMetrics metrics = m_noticeLabel->fontMetrics();
    const QRect free = rect().adjusted(kInset, kInset, -kInset, -kInset);
    QSize size = metrics.boundingRect(free, Qt::TextWordWrap, m_noticeLabel->text()).size();
    size = (size + 2 * kNoticePadding).boundedTo(free.size());
    const QSize button =
        m_codeButton->isHidden()
            ? QSize()
            : QSize(m_codeButton->fontMetrics().horizontalAdvance(m_codeButton->text()) +
                        2 * kCodePadding.width(),
                    m_codeButton->fontMetrics().height() + 2 * kCodePadding.height());
    const int below = button.isEmpty() ? 0 : kCodeGap + button.height();
    const int top = (height() - size.height() - below) / 2;
    m_noticeLabel->setGeometry(QRect(QPoint((width() - size.width()) / 2, top), size));
    m_codeButton->setGeometry(
        QRect(QPoint((width() - button.width()) / 2, top + size.height() + kCodeGap), button));
}
