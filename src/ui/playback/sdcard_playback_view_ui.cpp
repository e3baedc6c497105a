#include "ui/playback/sdcard_playback_view_ui.h"

#include <QDateTime>
#include <QLabel>

#include <initializer_list>

#include "render/video_surface.h"
#include "ui/palette.h"
#include "ui/playback/download_bar.h"
#include "ui/playback/no_sdcard_view.h"
#include "ui/playback/video_time_line_view.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::textKey;

namespace {

constexpr int kTopHeight = 44;
constexpr int kTimeLineHeight = 56;
constexpr int kButtonRowHeight = 44;
constexpr int kBottomHeight = kTimeLineHeight + kButtonRowHeight;
constexpr int kDownloadHeight = 40;
constexpr int kButtonSize = 24;
constexpr int kGap = 16;
constexpr int kMargin = 14;
constexpr int kSoundLeft = 23;  // below the timeline's play button
constexpr int kLabelGap = 12;
constexpr QSize kBadgePadding(8, 3);
constexpr QSize kNoticePadding(16, 10);
constexpr int kInset = 8;

int textWidth(const QLabel& label) {
    return label.fontMetrics().horizontalAdvance(label.text());
}

}  // namespace

KvSDCardPlaybackViewUI::KvSDCardPlaybackViewUI(QWidget* view)
    : QWidget(view),
      m_noSdcardView(new KvNoSdcardView(this)),
      m_noticeLabel(new QLabel(this)),
      m_topBar(new KvWidget(this)),
      m_bottomBar(new KvWidget(this)),
      m_nameLabel(new QLabel(m_topBar)),
      m_stateLabel(new QLabel(m_topBar)),
      m_clockCaption(new QLabel(orvelle::text("now"), m_topBar)),
      m_clockLabel(new QLabel(m_topBar)),
      m_momentCaption(new QLabel(orvelle::text("recorded"), m_bottomBar)),
      m_momentLabel(new QLabel(m_bottomBar)),
      m_timeLine(nullptr),
      m_downloadBar(nullptr) {
    setObjectName(QStringLiteral("playback"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("#playback{border-image:url(%1);}")
                      .arg(KvWidgetUtils::image(QStringLiteral("home_bg"))));
    for (KvWidget* bar : {m_topBar, m_bottomBar})
        bar->setBackgroundColor(QColor(QLatin1String(orvelle::palette::kBar)));
    m_buttons[kBack] = makeButton(m_topBar, "back", textKey("back_to_live"));
    m_timeLine = new KvVideoTimeLineView(m_bottomBar);
    for (QPushButton* button : m_timeLine->findChildren<QPushButton*>())
        button->setFocusPolicy(Qt::TabFocus);
    m_downloadBar = new orvelle::DownloadBar(this);
    m_noSdcardView->hide();
    // A double click on the picture counts, whatever lies on it.
    m_loadingView.setAttribute(Qt::WA_TransparentForMouseEvents);
    m_noticeLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    setUpLabels();
    setUpButtons();
}

KvSDCardPlaybackViewUI::~KvSDCardPlaybackViewUI() {
    m_loadingView.hideOver();
}

orvelle::VideoSurface* KvSDCardPlaybackViewUI::videoView() {
    if (m_videoView)
        return m_videoView;
    m_videoView = orvelle::makeVideoSurface(this);
    m_videoView->widget().setGeometry(pictureArea());
    m_videoView->widget().lower();
    m_videoView->widget().setVisible(!m_noCardShown);
    return m_videoView;
}

void KvSDCardPlaybackViewUI::blankPicture() {
    if (m_videoView)
        m_videoView->showNothing();
}

void KvSDCardPlaybackViewUI::setUpLabels() {
    for (QLabel* label : {m_nameLabel, m_clockLabel, m_momentLabel})
        label->setStyleSheet(QStringLiteral("QLabel{color:#ffffff;};"));
    m_stateLabel->setStyleSheet(
        QStringLiteral("QLabel{color:#ffffff;background:#00a7f9;border-radius:5px;};"));
    for (QLabel* caption : {m_clockCaption, m_momentCaption}) {
        caption->setStyleSheet(QStringLiteral("QLabel{color:#b9b9b9;};"));
        KvWidgetUtils::setFont(caption, orvelle::palette::kSmallFontPixels);
    }
    m_clockCaption->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_noticeLabel->setStyleSheet(QStringLiteral(
        "QLabel{background-color:rgba(0, 0, 0, 184);border-radius:10px;color:#ffffff;};"));
    m_noticeLabel->setWordWrap(true);
    m_noticeLabel->hide();
    for (QLabel* label : {m_nameLabel, m_clockLabel, m_momentLabel, m_noticeLabel})
        KvWidgetUtils::setFont(label, orvelle::palette::kFontPixels);
    KvWidgetUtils::setFont(m_stateLabel, orvelle::palette::kSmallFontPixels);
    for (QLabel* label : {m_stateLabel, m_noticeLabel})
        label->setAlignment(Qt::AlignCenter);
    for (QLabel* label : {m_nameLabel, m_stateLabel, m_clockLabel, m_noticeLabel})
        label->setTextFormat(Qt::PlainText);
}

KvPushButton* KvSDCardPlaybackViewUI::makeButton(QWidget* bar, const char* name, const char* key) {
    auto* button = new KvPushButton(bar);
    KvWidgetUtils::setUpImageButton(button, QLatin1String(name), key);
    // A click must not take the keys away from the view.
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

void KvSDCardPlaybackViewUI::setUpButtons() {
    m_buttons[kSound] = makeButton(m_bottomBar, "voice", textKey("sound"));
    m_buttons[kCalendar] = makeButton(m_bottomBar, "calendar", textKey("calendar"));
    m_buttons[kCapture] = makeButton(m_bottomBar, "capture", textKey("screenshot"));
    m_buttons[kDownload] = makeButton(m_bottomBar, "download", textKey("download"));
    m_buttons[kToLive] = makeButton(m_bottomBar, "switchlive", textKey("to_live"));
    m_buttons[kFullscreen] = makeButton(m_bottomBar, "fullscreen", textKey("maximized"));
    const auto setImages = [this](Button button, const char* unchecked, const char* checked) {
        m_buttons[button]->setImages(KvWidgetUtils::imagesOf(QLatin1String(unchecked)),
                                     KvWidgetUtils::imagesOf(QLatin1String(checked)));
    };
    setImages(kSound, "voice", "voiceoff");
    setImages(kFullscreen, "fullscreen", "cancel_fullscreen");
}

void KvSDCardPlaybackViewUI::setName(const QString& name) {
    m_name = name;
    m_nameLabel->setToolTip(KvWidgetUtils::toolTipText(name));
    layOutTopBar();
}

void KvSDCardPlaybackViewUI::setStateText(const QString& state) {
    if (m_stateLabel->text() == state)
        return;
    m_stateLabel->setText(state);
    layOutTopBar();
}

void KvSDCardPlaybackViewUI::setClockText(const QString& time) {
    m_clockLabel->setText(time);
}

void KvSDCardPlaybackViewUI::setMoment(int seconds) {
    m_timeLine->setValue(seconds);
    m_momentLabel->setText(momentText(seconds));
}

QString KvSDCardPlaybackViewUI::momentText(int seconds) const {
    const QDateTime moment = QDateTime::fromSecsSinceEpoch(seconds);
    const QString text = moment.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    if (!m_cameraZone || *m_cameraZone * 60 == moment.offsetFromUtc())
        return text;
    return QStringLiteral("%1 · %2 %3")
        .arg(text, orvelle::text("camera_time"),
             moment.toOffsetFromUtc(*m_cameraZone * 60).toString(QStringLiteral("MM-dd HH:mm:ss")));
}

void KvSDCardPlaybackViewUI::setCameraZone(std::optional<int> minutesEast) {
    m_cameraZone = minutesEast;
    m_momentLabel->setText(momentText(m_timeLine->value()));
}

void KvSDCardPlaybackViewUI::setOverlaid(bool overlaid) {
    if (m_overlaid == overlaid)
        return;
    m_overlaid = overlaid;
    showBars();
    layOut();
}

void KvSDCardPlaybackViewUI::setBarsVisible(bool visible) {
    if (m_barsVisible == visible)
        return;
    m_barsVisible = visible;
    showBars();
}

void KvSDCardPlaybackViewUI::showBars() {
    const bool visible = m_barsVisible || !m_overlaid;
    // Else the toolkit hands the focus to the next widget, wherever that is.
    if ((!visible || m_noCardShown) && hasFocusInBars())
        parentWidget()->setFocus(Qt::OtherFocusReason);
    m_topBar->setVisible(visible);
    m_bottomBar->setVisible(visible && !m_noCardShown);
}

bool KvSDCardPlaybackViewUI::hasFocusInBars() const {
    // The window's own, which is where the focus comes back to from a dialog.
    const QWidget* focused = window()->focusWidget();
    return m_topBar->isAncestorOf(focused) || m_bottomBar->isAncestorOf(focused);
}

bool KvSDCardPlaybackViewUI::isMouseInBars() const {
    return KvWidgetUtils::isMouseIn(*m_topBar) || KvWidgetUtils::isMouseIn(*m_bottomBar);
}

void KvSDCardPlaybackViewUI::setLoadingShown(bool shown) {
    if (m_loadingView.isOver() == shown)
        return;
    if (shown) {
        m_loadingView.setText(orvelle::text("loading"));
        m_loadingView.showOver(this, pictureArea());
        raiseControls();
    } else {
        m_loadingView.hideOver();
    }
}

void KvSDCardPlaybackViewUI::showNotice(const QString& text) {
    m_noticeLabel->setText(text);
    m_noticeLabel->setVisible(!text.isEmpty());
    placeNotice();
}

void KvSDCardPlaybackViewUI::setNoCardShown(bool shown) {
    if (m_noCardShown == shown)
        return;
    m_noCardShown = shown;
    m_noSdcardView->setVisible(shown);
    videoView()->widget().setVisible(!shown);
    showBars();
    layOut();
}

void KvSDCardPlaybackViewUI::raiseControls() {
    for (QWidget* control :
         std::initializer_list<QWidget*>{m_noticeLabel, m_topBar, m_bottomBar, m_downloadBar})
        control->raise();
}

QRect KvSDCardPlaybackViewUI::pictureArea() const {
    if (m_overlaid)
        return rect();
    return rect().adjusted(0, kTopHeight, 0, m_noCardShown ? 0 : -kBottomHeight);
}

void KvSDCardPlaybackViewUI::resizeEvent(QResizeEvent*) {
    layOut();
}

void KvSDCardPlaybackViewUI::layOut() {
    const QRect picture = pictureArea();
    if (m_videoView)
        m_videoView->widget().setGeometry(picture);
    m_noSdcardView->setGeometry(picture);
    if (m_loadingView.isOver())
        m_loadingView.setGeometry(picture);
    m_topBar->setGeometry(0, 0, width(), kTopHeight);
    m_bottomBar->setGeometry(0, height() - kBottomHeight, width(), kBottomHeight);
    m_downloadBar->setGeometry(0, height() - kBottomHeight - kDownloadHeight, width(),
                               kDownloadHeight);
    layOutTopBar();
    layOutBottomBar();
    placeNotice();
}

/// The name gives way to the state and the time.
void KvSDCardPlaybackViewUI::layOutTopBar() {
    m_buttons[kBack]->setGeometry(kMargin, (kTopHeight - kButtonSize) / 2, kButtonSize,
                                  kButtonSize);
    const int left = kMargin + kButtonSize + kLabelGap;
    const int clockWidth = m_clockLabel->fontMetrics().horizontalAdvance(QLatin1String("00:00:00"));
    const int clockLeft = width() - kMargin - clockWidth;
    m_clockLabel->setGeometry(clockLeft, 0, clockWidth, kTopHeight);
    const int captionLeft = clockLeft - textWidth(*m_clockCaption) - kLabelGap / 2;
    m_clockCaption->setGeometry(captionLeft, 0, clockLeft - captionLeft - kLabelGap / 2,
                                kTopHeight);

    const QSize badge(textWidth(*m_stateLabel) + 2 * kBadgePadding.width(),
                      m_stateLabel->fontMetrics().height() + 2 * kBadgePadding.height());
    const int free = qMax(0, captionLeft - left - badge.width() - 2 * kLabelGap);
    const QFontMetrics metrics = m_nameLabel->fontMetrics();
    const QString name = metrics.elidedText(m_name, Qt::ElideRight, free);
    m_nameLabel->setText(name);
    m_nameLabel->setGeometry(left, 0, metrics.horizontalAdvance(name), kTopHeight);
    m_stateLabel->setVisible(!m_stateLabel->text().isEmpty());
    m_stateLabel->setGeometry(QRect(QPoint(m_nameLabel->x() + m_nameLabel->width() + kLabelGap,
                                           (kTopHeight - badge.height()) / 2),
                                    badge));
}

void KvSDCardPlaybackViewUI::layOutBottomBar() {
    m_timeLine->setGeometry(0, 0, width(), kTimeLineHeight);
    const int top = kTimeLineHeight + (kButtonRowHeight - kButtonSize) / 2;
    m_buttons[kSound]->setGeometry(kSoundLeft, top, kButtonSize, kButtonSize);
    const int captionLeft = kSoundLeft + kButtonSize + kGap;
    const int captionWidth = textWidth(*m_momentCaption);
    m_momentCaption->setGeometry(captionLeft, kTimeLineHeight, captionWidth, kButtonRowHeight);
    const int momentLeft = captionLeft + captionWidth + kLabelGap / 2;
    int right = width() - kMargin;
    for (const Button id : {kFullscreen, kToLive, kDownload, kCapture, kCalendar}) {
        m_buttons.at(id)->setGeometry(right - kButtonSize, top, kButtonSize, kButtonSize);
        right -= kButtonSize + kGap;
    }
    m_momentLabel->setGeometry(momentLeft, kTimeLineHeight, qMax(0, right - momentLeft),
                               kButtonRowHeight);
}

void KvSDCardPlaybackViewUI::placeNotice() {
    const QRect free = pictureArea().adjusted(kInset, kInset, -kInset, -kInset);
    QSize size = m_noticeLabel->fontMetrics()
                     .boundingRect(free, Qt::TextWordWrap, m_noticeLabel->text())
                     .size();
    size = (size + 2 * kNoticePadding).boundedTo(free.size());
    QRect place(QPoint(), size);
    place.moveCenter(pictureArea().center());
    m_noticeLabel->setGeometry(place);
}
