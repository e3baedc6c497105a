#include "ui/playback/sdcard_playback_view.h"

#include <QCoreApplication>
#include <QScreen>

#include <chrono>
#include <limits>

#include "device/tutk_device.h"
#include "media/live/tutk_player.h"
#include "render/video_surface.h"
#include "ui/list/device_state_text.h"
#include "ui/playback/calendar_dialog.h"
#include "ui/playback/no_sdcard_view.h"
#include "ui/playback/video_time_line_view.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"

using UI = KvSDCardPlaybackViewUI;

namespace {

constexpr QSize kMinSize(660, 500);
// On a screen whose window leaves less than that, so that the bars stay in sight.
constexpr QSize kSmallMinSize(360, 240);
constexpr int kSmallScreenHeight = 700;
constexpr int kClockMs = 1000;
constexpr int kCoverDelayMs = 500;
constexpr int kBarsMs = 3000;
constexpr int kFutureSeconds = 3600;
constexpr int kToastBottom = 120;  // above the bar with the timeline

int secondsNow() {
    return static_cast<int>(qMin<qint64>(QDateTime::currentSecsSinceEpoch(),
                                         std::numeric_limits<int>::max() - qint64(kFutureSeconds)));
}

}  // namespace

KvSDCardPlaybackView::KvSDCardPlaybackView(QWidget* parent)
    : QWidget(parent), m_ui(new UI(this)), m_player(std::make_unique<KvTUTKPlayer>()) {
    setMinimumSize(screen()->size().height() < kSmallScreenHeight ? kSmallMinSize : kMinSize);
    setFocusPolicy(Qt::StrongFocus);
    // Reports the mouse over the children too, which take its moves.
    setAttribute(Qt::WA_Hover);
    m_player->setCallback(this, onPlayerEvent);
    m_clockTimer.setInterval(kClockMs);
    m_coverTimer.setInterval(kCoverDelayMs);
    m_barsTimer.setInterval(kBarsMs);
    for (QTimer* timer : {&m_coverTimer, &m_answerTimer, &m_barsTimer, &m_choiceTimer})
        timer->setSingleShot(true);
    m_choiceTimer.setTimerType(Qt::PreciseTimer);
    m_toast.setMargins(0, kToastBottom);
    connectSignals();
    connectButtons();
    releaseDevice();
}

KvSDCardPlaybackView::~KvSDCardPlaybackView() {
    releaseDevice();
}

qint64 KvSDCardPlaybackView::nowMs() const {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void KvSDCardPlaybackView::connectSignals() {
    using View = KvSDCardPlaybackView;
    const auto link = [this](auto signal, auto slot) {
        connect(this, signal, this, slot, Qt::QueuedConnection);
    };
    link(&View::updateMarksSignal, &View::_doUpdateMarks);
    link(&View::updateSDCardSignal, &View::_doUpdateSDCard);
    link(&View::hideLoadingViewSignal, &View::_doHideLoadingView);
    link(&View::updateTimeLineViewSignal, &View::_doUpdateTimeLineView);
    link(&View::playNextSignal, &View::_doPlayNext);
    link(&View::playFailedSignal, &View::_doPlayFailed);
    link(&View::updateVideoInfo, &View::_onUpdateVideoInfo);
    connect(&m_clockTimer, &QTimer::timeout, this, &View::_invokeDateTimeTimer);
    connect(&m_coverTimer, &QTimer::timeout, this, &View::updateCover);
    connect(&m_answerTimer, &QTimer::timeout, this, &View::onNoAnswer);
    connect(&m_choiceTimer, &QTimer::timeout, this, &View::playPendingChoice);
    connect(&m_barsTimer, &QTimer::timeout, this, &View::hideBars);
    connect(&m_clicker, &KvClicker::doubleClick, this, &View::_onDoubleClickVideoView);
}

void KvSDCardPlaybackView::connectButtons() {
    using View = KvSDCardPlaybackView;
    const auto link = [this](UI::Button button, void (View::*slot)(bool)) {
        connect(m_ui->button(button), &QPushButton::clicked, this, slot);
    };
    link(UI::kBack, &View::_onClickBackButton);
    link(UI::kSound, &View::_onClickVolume);
    link(UI::kCalendar, &View::_onClickCalendarButton);
    link(UI::kCapture, &View::_onClickCapture);
    link(UI::kToLive, &View::_onClickBackButton);
    link(UI::kFullscreen, &View::_onClickFull);
    connect(m_ui->noSdcardView()->backLabel(), &KvClickLabel::click, this,
            &View::_onClickBackButton);
    const KvVideoTimeLineView* timeLine = m_ui->timeLine();
    connect(timeLine, &KvVideoTimeLineView::selectedTime, this, &View::_onSelectedVideoTime);
    connect(timeLine, &KvVideoTimeLineView::clickPlay, this, &View::_onClickPlay);
    connect(timeLine, &KvVideoTimeLineView::clickPrev, this, &View::_onClickPrev);
    connect(timeLine, &KvVideoTimeLineView::clickNext, this, &View::_onClickNext);
}

void KvSDCardPlaybackView::setDevice(KvTUTKDevice* device) {
    releaseDevice();
    if (!device || !device->isConnected())
        return;
    m_device = device;
    m_wasOnline = true;
    m_ui->setName(device->displayName());
    show();
    m_player->setView(m_ui->videoView());
    m_clicker.setTarget(&m_ui->videoView()->widget());
    m_player->setDevice(device);
    setFullscreen(window()->isFullScreen());
    device->addListener(this, onResponse);
    m_clockTimer.start();
    m_listAskedMs = nowMs();
    requestCardInfo(InfoRequest::kOpening);
}

void KvSDCardPlaybackView::releaseDevice() {
    if (m_device)
        m_device->removeListener(this);
    m_device = nullptr;
    stopPlayer();
    m_player->setDevice(nullptr);
    // What the camera and the player told before is of no interest any more.
    QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
    m_clockTimer.stop();
    m_choiceTimer.stop();
    m_recordings.clear();
    m_infoRequest = InfoRequest::kNone;
    m_hasPicture = false;
    m_ui->blankPicture();
    updateCover();
    m_toast.remove();
    if (m_calendar)
        m_calendar->reject();
    // The page is likely to be hidden next, and would take a button's focus with it.
    if (m_ui->hasFocusInBars())
        setFocus(Qt::OtherFocusReason);
    m_ui->showNotice({});
    m_ui->setNoCardShown(false);
    m_ui->setName({});
    m_ui->setStateText({});
    showMarks();
    _invokeDateTimeTimer();
    m_ui->setMoment(secondsNow());
}

void KvSDCardPlaybackView::awaitAnswer() {
    m_answerTimer.start(answerMs());
    if (m_hasPicture && !m_ui->isLoadingShown())
        m_coverTimer.start();
    updateCover();
}

bool KvSDCardPlaybackView::isAwaitingAnswer() const {
    return m_isLoading || m_recordings.isAsking() || m_infoRequest == InfoRequest::kOpening;
}

/// A picture that is on the screen is held for a moment before the sign covers it.
void KvSDCardPlaybackView::updateCover() {
    const bool isAwaiting = isAwaitingAnswer();
    if (!isAwaiting) {
        m_answerTimer.stop();
        m_coverTimer.stop();
    }
    m_ui->setLoadingShown(isAwaiting && !m_coverTimer.isActive());
}

void KvSDCardPlaybackView::onNoAnswer() {
    m_recordings.giveUp();
    m_infoRequest = InfoRequest::kNone;
    const QString reason = orvelle::text("the_camera_does_not_answer");
    if (m_newerThan >= 0) {
        endSearch();
    } else if (m_isPlaying && !m_isLoading) {
        m_toast.show(this, reason);
        updateCover();
    } else {
        failWith(reason);
    }
}

/// The reason takes the place of whatever was there, the sign of a missing card included: both
/// stand in the middle, and the way back is there, too.
void KvSDCardPlaybackView::failWith(const QString& reason) {
    stopPlayer();
    m_ui->setNoCardShown(false);
    m_ui->showNotice(reason);
    updateCover();
}

void KvSDCardPlaybackView::_invokeDateTimeTimer() {
    m_ui->setClockText(QTime::currentTime().toString(QStringLiteral("HH:mm:ss")));
    m_ui->timeLine()->setMaximum(secondsNow() + kFutureSeconds);
    if (!m_device)
        return;
    const bool isOnline = m_device->isOnline();
    if (isOnline != std::exchange(m_wasOnline, isOnline))
        onConnectionChanged(isOnline);
    if (!isOnline)
        m_ui->setStateText(orvelle::deviceStateText(*m_device));
    else
        refreshQuietly();
}

void KvSDCardPlaybackView::onConnectionChanged(bool isOnline) {
    if (!isOnline) {
        m_recordings.giveUp();
        m_infoRequest = InfoRequest::kNone;
        m_choiceTimer.stop();
        failWith(orvelle::text("camera_offline"));
        return;
    }
    m_ui->showNotice({});
    m_ui->setStateText({});
    requestCardInfo(m_recordings.isEmpty() ? InfoRequest::kOpening : InfoRequest::kCheck);
}
