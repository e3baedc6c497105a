#include "ui/playback/sdcard_playback_view.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <QScreen>
#include <QtDebug>

#include <chrono>
#include <limits>
#include <utility>

#include "core/file_utils.h"
#include "device/device_messages.h"
#include "device/tutk_device.h"
#include "device/tutk_request.h"
#include "media/live/tutk_player.h"
#include "render/video_surface.h"
#include "ui/dialogs/alert_dialog.h"
#include "ui/dialogs/directory_dialog.h"
#include "ui/list/device_state_text.h"
#include "ui/playback/calendar_dialog.h"
#include "ui/playback/download_bar.h"
#include "ui/playback/full_screen_bars.h"
#include "ui/playback/no_sdcard_view.h"
#include "ui/playback/time_line_view.h"
#include "ui/playback/video_time_line_view.h"
#include "ui/preview/media_folder.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/focus_ring.h"
#include "ui/widgets/menu_style.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::textKey;
using News = orvelle::CardPlaying::News;
using Wish = orvelle::Recordings::Wish;
using UI = KvSDCardPlaybackViewUI;

namespace {

constexpr QSize kMinSize(660, 500);
// On a screen whose window leaves less than that, so that the bars stay in sight.
constexpr QSize kSmallMinSize(360, 240);
constexpr int kSmallScreenHeight = 700;
constexpr int kClockMs = 1000;
constexpr int kCoverDelayMs = 500;
constexpr int kFutureSeconds = 3600;
/// By which what can be played is behind what is recorded.
constexpr int kRecordingLagSec = 3;
/// A recording ends with the key picture that the next one begins with.
constexpr int kLongestOverlapSec = 12;
constexpr int kToastBottom = 120;  // above the bar with the timeline

int secondsNow() {
    return static_cast<int>(qMin<qint64>(QDateTime::currentSecsSinceEpoch(),
                                         std::numeric_limits<int>::max() - qint64(kFutureSeconds)));
}

}  // namespace

KvSDCardPlaybackView::KvSDCardPlaybackView(QWidget* parent)
    : QWidget(parent),
      m_ui(new UI(this)),
      m_bars(new orvelle::FullScreenBars(this, m_ui)),
      m_list(
          [this](uint32_t type, const QByteArray& payload) { return sendRequest(type, payload); },
          [this] { return nowMs(); }),
      m_choice([this] { return nowMs(); }),
      m_player(std::make_unique<KvTUTKPlayer>()) {
    setMinimumSize(screen()->size().height() < kSmallScreenHeight ? kSmallMinSize : kMinSize);
    setFocusPolicy(Qt::StrongFocus);
    m_player->setCallback(this, onPlayerEvent);
    m_clockTimer.setInterval(kClockMs);
    m_coverTimer.setInterval(kCoverDelayMs);
    for (QTimer* timer : {&m_coverTimer, &m_answerTimer})
        timer->setSingleShot(true);
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
    connect(&m_choice, &orvelle::MomentChoice::due, this, &View::playChoice);
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
    link(UI::kDownload, &View::_onClickDownload);
    link(UI::kToLive, &View::_onClickBackButton);
    link(UI::kFullscreen, &View::_onClickFull);
    connect(m_ui->noSdcardView()->backLabel(), &KvClickLabel::click, this,
            &View::_onClickBackButton);
    const orvelle::DownloadBar* bar = m_ui->downloadBar();
    connect(bar, &orvelle::DownloadBar::ended, this, &View::updateDownloadButton);
    connect(bar, &orvelle::DownloadBar::failed, this,
            [this](const QString& reason) { m_toast.show(this, reason); });
    connect(bar, &orvelle::DownloadBar::done, this, &View::tellDownloaded);
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
    openCard();
}

void KvSDCardPlaybackView::releaseDevice() {
    m_ui->downloadBar()->stop();
    if (m_device)
        m_device->removeListener(this);
    m_device = nullptr;
    stopPlayer();
    m_player->setDevice(nullptr);
    // What the camera and the player told before is of no interest any more.
    QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
    m_clockTimer.stop();
    m_choice.forget();
    m_list.clear();
    m_playing.forgetInterrupted();
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
    m_ui->setCameraZone({});
    m_ui->timeLine()->timeLine()->setMarkedSpan(std::nullopt);
    updateDownloadButton();
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
    return m_playing.isOpening() || m_playing.isDry() || m_list.isAwaited();
}

void KvSDCardPlaybackView::followDryness() {
    if (m_playing.isDry())
        awaitAnswer();
    else
        updateCover();
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
    const QString reason = orvelle::text("the_camera_does_not_answer");
    const bool isSearching = m_list.recordings().wished() == Wish::kNewer;
    m_list.giveUp();
    if (isSearching) {
        updateCover();
        m_toast.show(this, orvelle::text("no_more_files"));
    } else if (m_playing.isOpen() && !m_playing.isOpening()) {
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
        m_list.refreshQuietly(m_ui->timeLine()->shownSpan(), answerMs());
}

void KvSDCardPlaybackView::onConnectionChanged(bool isOnline) {
    if (!isOnline) {
        m_playing.interrupt();
        m_list.giveUp();
        m_choice.forget();
        failWith(orvelle::text("camera_offline"));
        return;
    }
    m_ui->showNotice({});
    m_ui->setStateText({});
    // Its card may be another one by now.
    openCard();
}

bool KvSDCardPlaybackView::sendRequest(uint32_t type, const QByteArray& payload) {
    return m_device->sendIOCtrl(type, payload.constData(), payload.size());
}

void KvSDCardPlaybackView::openCard() {
    if (m_list.open())
        awaitAnswer();
    else
        failWith(orvelle::text("the_camera_does_not_answer"));
}

/// Others ask for the same, and only the answer to its own request starts the list.
void KvSDCardPlaybackView::_doUpdateSDCard() {
    using Card = orvelle::CardList::Card;
    if (!m_device)
        return;
    const Card before = m_list.noteCard(m_totalMiB);
    if (m_list.card() == Card::kMissing) {
        showNoCard();
        return;
    }
    m_ui->setNoCardShown(false);
    showState();
    const bool isBack = before == Card::kAsked || before == Card::kMissing;
    const bool wasLost = std::exchange(m_wasLost, false);
    const std::optional<int> moment = m_playing.takeInterrupted();
    if (isBack || wasLost) {
        m_list.recordings().forgetMonths();
        requestFiles(QDate::currentDate());
        if (moment)
            m_list.recordings().wish(Wish::kMoment, *moment);
    }
    updateCover();
}

void KvSDCardPlaybackView::showNoCard() {
    m_playing.interrupt();
    stopPlayer();
    m_choice.forget();
    m_list.recordings().clear();
    showMarks();
    m_toast.remove();
    m_ui->showNotice({});
    m_ui->setStateText(orvelle::text("no_sdcard"));
    m_ui->setNoCardShown(true);
    if (m_calendar)
        m_calendar->reject();
    updateCover();
}

void KvSDCardPlaybackView::requestFiles(const QDate& day) {
    if (!m_device)
        return;
    qDebug() << "_requestFiles -> " << day;
    qDebug() << "_requestDateTime -> " << m_list.recordings().lastAsked();
    switch (m_list.askMonth(day)) {
        case orvelle::CardList::Asked::kKnown:
            qDebug("no _requestFiles");
            return;
        case orvelle::CardList::Asked::kSent:
            return awaitAnswer();
        case orvelle::CardList::Asked::kNotTaken:
            return onNoAnswer();
    }
}

/// For one who has come to the end of what is known.
void KvSDCardPlaybackView::lookFor(Wish wish, qint64 time) {
    if (!m_device)
        return;
    if (!m_list.wish(wish, time))
        return onNoAnswer();
    awaitAnswer();
    takeStart();
}

/// Plays what was wished for, once it is clear where it is.
void KvSDCardPlaybackView::takeStart() {
    const orvelle::Recordings::Start start = m_list.recordings().takeStart();
    if (start.index >= 0)
        return playFile(start.index, static_cast<int>(start.from));
    updateCover();
    if (start.wish == Wish::kDay)
        m_toast.show(this, orvelle::text("no_recordings_on_this_day"));
    else if (start.wish != Wish::kNone && start.wish != Wish::kNewest)
        m_toast.show(this, orvelle::text("no_more_files"));
}

void KvSDCardPlaybackView::_onUpdateVideoInfo(const QVector<KvTimeLineMark>& runs) {
    if (m_device && m_list.noteRuns(runs))
        emit updateMarksSignal();
}

void KvSDCardPlaybackView::onOverview(const orvelle::CardOverviewReply& overview) {
    if (!m_device)
        return;
    m_list.noteOverview(overview);
    showMarks();
    showState();
    updateDownloadButton();
}

/// What the card is like, behind what the view does.
void KvSDCardPlaybackView::showState() {
    if (m_list.card() != orvelle::CardList::Card::kPresent)
        return;
    QString state = orvelle::text("replaying");
    const std::optional<orvelle::CardOverviewReply>& card = m_list.overview();
    if (card && (card->isReadOnly || card->isFull))
        state += QStringLiteral(" · ") + (card->isReadOnly ? orvelle::text("card_is_read_only")
                                                           : orvelle::text("card_is_full"));
    m_ui->setStateText(state);
}

void KvSDCardPlaybackView::onZone(int minutesEast) {
    if (!m_device)
        return;
    m_list.noteZone(minutesEast);
    m_ui->setCameraZone(minutesEast);
}

void KvSDCardPlaybackView::_doUpdateMarks() {
    updateCover();
    if (m_list.recordings().isEmpty() && !m_playing.isOpen())
        m_ui->showNotice(orvelle::text("no_recordings"));
    else if (m_ui->timeLine()->marks().isEmpty())
        m_ui->showNotice({});
    showMarks();
    takeStart();
}

void KvSDCardPlaybackView::showMarks() {
    const orvelle::Recordings& recordings = m_list.recordings();
    m_ui->timeLine()->setMarks(recordings.all());
    m_ui->timeLine()->setMinimum(static_cast<int>(recordings.earliest()));
    m_ui->timeLine()->setUnknown(
        recordings.unknown({recordings.earliest(), secondsNow() + kFutureSeconds}));
    if (m_calendar)
        fillCalendar();
}

int KvSDCardPlaybackView::startPlayer(const QDateTime& start) {
    m_player->setStartTime(start);
    m_player->setRecordingStart(QDateTime::fromSecsSinceEpoch(m_list.recordings().currentStart()));
    return m_player->play();
}

orvelle::PlaybackEnd KvSDCardPlaybackView::playbackEnd() const {
    return m_player->endReason();
}

bool KvSDCardPlaybackView::playOnRequest(int index, int from) {
    if (!m_choice.acceptClick())
        return false;
    playFile(index, from);
    return true;
}

void KvSDCardPlaybackView::playChoice(int time) {
    const int index = m_list.recordings().indexAt(time);
    if (index < 0 || playOnRequest(index, time))
        return;
    if (!m_ui->timeLine()->isDragging())
        m_ui->setMoment(time);
    m_choice.postpone(time);
}

/// By the user, so that what plays must not move it.
bool KvSDCardPlaybackView::isTimeLineTaken() const {
    return m_ui->timeLine()->isDragging() || m_choice.isWaiting();
}

void KvSDCardPlaybackView::playFile(int index, int from) {
    stopPlayer();
    const KvTimeLineMark mark = m_list.recordings().select(index);
    const int wanted = mark.contains(from) ? from : mark.start;
    // What is being recorded now has been, up to a moment ago.
    const bool isPresent = mark.contains(secondsNow());
    const int start =
        isPresent ? qMax(mark.start, qMin(wanted, secondsNow() - kRecordingLagSec)) : wanted;
    m_ui->showNotice({});
    if (!isTimeLineTaken())
        m_ui->setMoment(start);
    applyVolume();
    if (startPlayer(QDateTime::fromSecsSinceEpoch(start)) < 0) {
        failWith(orvelle::text("the_recording_could_not_be_played"));
        return;
    }
    m_playing.begin(start);
    m_ui->timeLine()->setPlayChecked(true);
    m_ui->setNoCardShown(false);
    awaitAnswer();
}

void KvSDCardPlaybackView::stopPlayer() {
    m_player->shutdown();
    m_playing.stop();
    m_list.recordings().dropSearch();
    m_ui->timeLine()->setPlayChecked(false);
}

void KvSDCardPlaybackView::_doHideLoadingView() {
    if (!m_playing.take(News::kFirstPicture))
        return;
    m_playing.shown();
    m_hasPicture = true;
    m_isSkipping = false;
    if (m_playing.isPaused())
        m_player->pause();
    updateCover();
}

void KvSDCardPlaybackView::_doUpdateTimeLineView(double seconds) {
    // Before its first picture, what comes is of the file before.
    if (!m_playing.isOpen() || m_playing.isOpening())
        return;
    const int moment = m_playing.follow(seconds);
    m_list.recordings().follow(m_playing.position());
    if (!isTimeLineTaken() && moment != m_ui->timeLine()->value())
        m_ui->setMoment(moment);
}

void KvSDCardPlaybackView::_doPlayNext() {
    // The end that meets a pause waits for the user to go on.
    if (m_playing.isPaused() || !m_playing.take(News::kEnded))
        return;
    const int next = indexAfterEnd();
    if (next >= 0) {
        playFile(next, m_playing.position());
        return;
    }
    stopPlayer();
    lookFor(Wish::kNewer, m_list.recordings().currentEnd());
}

/// A camera runs on into the recording that follows, or it ended with the first one, which may have
/// gone on for a while into the minute after it; that is played from there then.
int KvSDCardPlaybackView::indexAfterEnd() const {
    const orvelle::Recordings& recordings = m_list.recordings();
    const int current = recordings.current();
    const bool isBarelyBegun =
        current >= 0 && m_playing.from() < recordings.currentStart() &&
        m_playing.position() < recordings.currentStart() + kLongestOverlapSec;
    return isBarelyBegun ? current : recordings.next();
}

/// Of several in a row it is told once.
bool KvSDCardPlaybackView::skipsMissing() {
    const int next = m_list.recordings().next();
    if (playbackEnd() != orvelle::PlaybackEnd::kMissing || next < 0)
        return false;
    if (!std::exchange(m_isSkipping, true))
        m_toast.show(this, orvelle::text("the_recording_could_not_be_played"));
    playFile(next);
    return true;
}

void KvSDCardPlaybackView::_doPlayFailed() {
    if (!m_playing.take(News::kOpenFailed) || !m_device || skipsMissing())
        return;
    const bool isLost = playbackEnd() == orvelle::PlaybackEnd::kLost;
    // What has not even begun is not tried again and again.
    m_wasLost = isLost && !m_playing.isOpening();
    m_playing.interrupt();
    failWith(isLost ? orvelle::text("the_connection_to_the_camera_was_lost")
                    : orvelle::text("the_recording_could_not_be_played"));
    m_list.check();
}

void KvSDCardPlaybackView::_onSelectedVideoTime(int time) {
    m_list.recordings().dropSearch();
    m_choice.forget();
    if (_findDateTimeIndex(QDateTime::fromSecsSinceEpoch(time)) >= 0)
        playChoice(time);
    else
        lookFor(m_list.recordings().knows(time) ? Wish::kNewer : Wish::kMoment, time);
}

void KvSDCardPlaybackView::_onClickPrev() {
    if (const int index = m_list.recordings().previous(); index >= 0)
        playOnRequest(index);
    else if (m_list.recordings().currentStart() == 0)
        m_toast.show(this, orvelle::text("no_more_files"));
    else if (m_choice.acceptClick())
        lookFor(Wish::kOlder, m_list.recordings().currentStart());
}

void KvSDCardPlaybackView::_onClickNext() {
    const orvelle::Recordings& recordings = m_list.recordings();
    if (const int index = recordings.next(); index >= 0)
        playOnRequest(index);
    else if (m_choice.acceptClick())
        lookFor(Wish::kNewer, recordings.currentEnd());
}

void KvSDCardPlaybackView::_onClickPlay(bool checked) {
    using State = orvelle::CardPlaying::State;
    m_playing.setPaused(!checked);
    if (m_playing.isOpening())
        return;
    if (m_playing.state() == State::kPaused) {
        m_player->pause();
        updateCover();
    } else if (m_playing.isOpen() && m_playing.isTold(News::kEnded)) {
        _doPlayNext();
    } else if (m_playing.isOpen()) {
        m_player->resume();
    } else if (checked) {
        playAgain();
    }
}

void KvSDCardPlaybackView::playAgain() {
    const orvelle::Recordings& recordings = m_list.recordings();
    const int from = m_ui->timeLine()->value();
    int index = recordings.indexAt(from);
    if (index < 0)
        index = recordings.current();
    if (index < 0)
        index = recordings.all().size() - 1;
    if (index >= 0)
        playOnRequest(index, from);
    m_ui->timeLine()->setPlayChecked(m_playing.isOpen());
}

int KvSDCardPlaybackView::_findDateTimeIndex(const QDateTime& time) const {
    return m_list.recordings().indexAt(time.toSecsSinceEpoch());
}

int KvSDCardPlaybackView::_findDateIndex(const QDate& date) const {
    return m_list.recordings().indexOn(date);
}

void KvSDCardPlaybackView::_onClickCalendar(QDate date) {
    requestFiles(date);
}

KvCalendarDialog* KvSDCardPlaybackView::calendar() {
    using View = KvSDCardPlaybackView;
    if (!m_calendar) {
        m_calendar = new KvCalendarDialog(this);
        connect(m_calendar, &KvCalendarDialog::clickDate, this, &View::_onClickCalendar);
        connect(m_calendar, &KvCalendarDialog::monthChanged, this, &View::_onClickCalendar);
    }
    return m_calendar;
}

void KvSDCardPlaybackView::_onClickCalendarButton(bool) {
    if (!m_device)
        return;
    const orvelle::Recordings& recordings = m_list.recordings();
    const int current = recordings.current();
    calendar();
    fillCalendar();
    m_calendar->setDate(
        current < 0 ? QDate::currentDate()
                    : QDateTime::fromSecsSinceEpoch(recordings.all().at(current).start).date());
    const QPointer<KvSDCardPlaybackView> self(this);
    const bool isChosen = m_calendar->execCentred(this) != 0;
    if (self && isChosen && m_device && m_calendar->date().isValid())
        playDay(m_calendar->date());
}

void KvSDCardPlaybackView::playDay(const QDate& day) {
    const orvelle::Recordings& recordings = m_list.recordings();
    const int index = _findDateIndex(day);
    qDebug() << "calendar date = " << day << ", index = " << index;
    if (index >= 0 && recordings.knows(day))
        return playChoice(recordings.all().at(index).start);
    if (!m_list.wishDay(day))
        return onNoAnswer();
    awaitAnswer();
    takeStart();
}

void KvSDCardPlaybackView::fillCalendar() {
    const std::optional<orvelle::CardOverviewReply>& card = m_list.overview();
    m_calendar->setMonths(card ? card->months : QVector<QDate>());
    m_calendar->setMarks(m_list.recordings().all());
}

void KvSDCardPlaybackView::_onClickBackButton(bool) {
    if (!agreesToLeave())
        return;
    releaseDevice();
    emit clickBackButton();
}

void KvSDCardPlaybackView::_onClickCapture(bool) {
    if (!m_device || !m_hasPicture)
        return;
    // Of the moment that is seen, not of the click.
    const QDateTime moment = QDateTime::fromSecsSinceEpoch(m_playing.moment());
    const QString path = orvelle::saveSnapshot(*m_ui->videoView(), m_device->uid(),
                                               moment.toString(QStringLiteral("yyMMddHHmmss")),
                                               moment, this, m_toast);
    if (!path.isEmpty())
        KvDirectoryDialog(orvelle::text("the_screenshot_you_recorded_is_save_to"), path, window())
            .execCentred(this);
}

bool KvSDCardPlaybackView::isDownloading() const {
    return m_ui->downloadBar()->isRunning();
}

/// A download ends with the page.
bool KvSDCardPlaybackView::agreesToLeave() {
    if (!m_ui->downloadBar()->isRunning())
        return true;
    const QPointer<KvSDCardPlaybackView> self(this);
    KvAlertDialog question(orvelle::text("leaving_cancels_the_download"), window());
    question.setIrrevocable(orvelle::text("cancel_the_download"));
    return question.execCentred(this) == QDialog::Accepted && self;
}

/// A camera that cannot send recordings for a file leaves the button off, which says why.
void KvSDCardPlaybackView::updateDownloadButton() {
    const std::optional<orvelle::CardOverviewReply>& card = m_list.overview();
    const bool canSend = card && card->canDownload;
    KvPushButton* button = m_ui->button(UI::kDownload);
    button->setEnabled(canSend && !m_ui->downloadBar()->isRunning());
    KvWidgetUtils::setToolTip(
        button, canSend ? textKey("download") : textKey("the_camera_cannot_send_recordings"));
}

void KvSDCardPlaybackView::_onClickDownload(bool) {
    if (!m_device)
        return;
    const int value = m_ui->timeLine()->value();
    const int index = m_list.recordings().indexAt(value);
    const QDate day = QDateTime::fromSecsSinceEpoch(value).date();
    const std::optional<orvelle::TimeSpan> marked = m_ui->timeLine()->timeLine()->markedSpan();
    QMenu menu(this);
    menu.setStyleSheet(orvelle::menuStyle());
    QAction* minute = menu.addAction(orvelle::text("download_this_minute"));
    QAction* span = menu.addAction(orvelle::text("download_the_marked_span"));
    QAction* whole = menu.addAction(orvelle::text("download_this_day"));
    minute->setEnabled(index >= 0);
    span->setEnabled(marked.has_value());
    const QPointer<KvSDCardPlaybackView> self(this);
    const QPoint above = m_ui->button(UI::kDownload)->mapToGlobal({0, -menu.sizeHint().height()});
    const QAction* chosen = menu.exec(above);
    if (!self || !chosen || !m_device)
        return;
    if (chosen == minute) {
        const KvTimeLineMark file = m_list.recordings().all().value(index);
        download({file.start, file.end()});
    } else if (chosen == span) {
        download(*marked);
    } else if (chosen == whole) {
        download(
            {day.startOfDay().toSecsSinceEpoch(), day.addDays(1).startOfDay().toSecsSinceEpoch()});
    }
}

void KvSDCardPlaybackView::download(const orvelle::TimeSpan& span) {
    std::vector<orvelle::CardDownload::Stretch> stretches;
    for (const KvTimeLineMark& run : m_list.recordings().runsWithin(span))
        stretches.push_back(
            {run.start, qMax<qint64>(run.start, span.start), qMin<qint64>(run.end(), span.end)});
    if (stretches.empty()) {
        m_toast.show(this, orvelle::text("nothing_was_recorded_then"));
        return;
    }
    const QString folder =
        orvelle::usableMediaFolder(KvFileUtils::videoPath, m_device->uid(), this);
    if (folder.isEmpty())
        return;
    const QString name = QDateTime::fromSecsSinceEpoch(stretches.front().fromSec)
                             .toString(QStringLiteral("yyMMddHHmmss"));
    m_ui->downloadBar()->start(m_device, std::move(stretches),
                               QStringLiteral("%1/%2.mp4").arg(folder, name));
    updateDownloadButton();
}

void KvSDCardPlaybackView::tellDownloaded(const QString& path, int missingMinutes) {
    if (missingMinutes > 0)
        m_toast.show(this, orvelle::text("minutes_are_missing").arg(missingMinutes));
    KvDirectoryDialog(orvelle::text("the_download_is_saved_to"), path, window()).execCentred(this);
}

/// I and O mark the span between two moments, Delete forgets it.
bool KvSDCardPlaybackView::isMarkKey(QKeyEvent* event) {
    KvTimeLineView* timeLine = m_ui->timeLine()->timeLine();
    const qint64 now = timeLine->value();
    const orvelle::TimeSpan former = timeLine->markedSpan().value_or(orvelle::TimeSpan{now, now});
    switch (event->key()) {
        case Qt::Key_I:
            timeLine->setMarkedSpan(orvelle::TimeSpan{now, qMax(former.end, now + 1)});
            return true;
        case Qt::Key_O:
            timeLine->setMarkedSpan(orvelle::TimeSpan{qMin(former.start, now - 1), now});
            return true;
        case Qt::Key_Delete:
            timeLine->setMarkedSpan(std::nullopt);
            return true;
        default:
            return false;
    }
}

void KvSDCardPlaybackView::_onClickVolume(bool) {
    KvPushButton* button = m_ui->button(UI::kSound);
    button->setState(1 - button->state());
    applyVolume();
}

void KvSDCardPlaybackView::applyVolume() {
    m_player->setVolume(m_ui->button(UI::kSound)->state() != 0 ? 0.0 : 1.0);
}

bool KvSDCardPlaybackView::isFullscreen() const {
    return m_ui->button(UI::kFullscreen)->state() != 0;
}

void KvSDCardPlaybackView::exitsFullscreen() {
    setFullscreen(false);
}

void KvSDCardPlaybackView::_onClickFull(bool) {
    const bool wasFullscreen = window()->isFullScreen();
    setFullscreen(!wasFullscreen);
    emit requestFullscreen(!wasFullscreen);
}

void KvSDCardPlaybackView::_onDoubleClickVideoView() {
    _onClickFull(false);
}

void KvSDCardPlaybackView::setFullscreen(bool fullscreen) {
    KvPushButton* button = m_ui->button(UI::kFullscreen);
    button->setState(fullscreen ? 1 : 0);
    KvWidgetUtils::setToolTip(button, fullscreen ? textKey("minimized") : textKey("maximized"));
    m_bars->setFullscreen(fullscreen);
}

bool KvSDCardPlaybackView::event(QEvent* event) {
    // A key that is let go elsewhere must not hold the timeline for ever.
    if ((event->type() == QEvent::FocusOut && !m_isPassingKey) ||
        event->type() == QEvent::WindowDeactivate)
        m_ui->timeLine()->timeLine()->cancelKeys();
    return QWidget::event(event);
}

/// The bars may have left since the focus came.
bool KvSDCardPlaybackView::focusNextPrevChild(bool next) {
    if (orvelle::FocusRing::isKeyboardInUse())
        m_bars->wake();
    return QWidget::focusNextPrevChild(next);
}

void KvSDCardPlaybackView::resizeEvent(QResizeEvent*) {
    m_ui->setGeometry(rect());
}

void KvSDCardPlaybackView::keyPressEvent(QKeyEvent* event) {
    KvVideoTimeLineView* timeLine = m_ui->timeLine();
    if (event->key() == Qt::Key_Escape && window()->isFullScreen()) {
        _onClickFull(false);
    } else if (event->key() == Qt::Key_Space && m_device && !m_ui->isNoCardShown()) {
        if (event->isAutoRepeat())
            return;
        m_bars->wake();
        timeLine->setPlayChecked(!timeLine->isPlayChecked());
        _onClickPlay(timeLine->isPlayChecked());
    } else if (!(m_device && isMarkKey(event)) && !passToTimeLine(event)) {
        QWidget::keyPressEvent(event);
    }
}

void KvSDCardPlaybackView::keyReleaseEvent(QKeyEvent* event) {
    if (!passToTimeLine(event))
        QWidget::keyReleaseEvent(event);
}

/// A key that the timeline does not want comes back here, as to its parent.
bool KvSDCardPlaybackView::passToTimeLine(QKeyEvent* event) {
    if (m_isPassingKey || !m_device || m_ui->isNoCardShown())
        return false;
    m_isPassingKey = true;
    QCoreApplication::sendEvent(m_ui->timeLine()->timeLine(), event);
    m_isPassingKey = false;
    if (event->isAccepted() && event->type() == QEvent::KeyPress)
        m_bars->wake();
    return event->isAccepted();
}

// What runs on the player's and the device's threads.

/// Runs it on the interface thread, unless the camera is let go of before.
template <class Work>
void KvSDCardPlaybackView::post(Work work) {
    QMetaObject::invokeMethod(this, std::move(work), Qt::QueuedConnection);
}

int32_t KvSDCardPlaybackView::onPlayerEvent(void* user, int32_t event, double a, double) {
    static_cast<KvSDCardPlaybackView*>(user)->handlePlayerEvent(event, a);
    return 0;
}

void KvSDCardPlaybackView::handlePlayerEvent(int32_t event, double seconds) {
    switch (event) {
        case KvBasePlayerProgress:
            emit updateTimeLineViewSignal(seconds);
            break;
        case KvBasePlayerOpenFailed:
            m_playing.tell(News::kOpenFailed);
            emit playFailedSignal();
            break;
        case KvBasePlayerFirstFrame:
            m_playing.tell(News::kFirstPicture);
            emit hideLoadingViewSignal();
            break;
        case KvBasePlayerVideoEnded:
            qDebug("play ended do play next");
            m_playing.tell(News::kEnded);
            emit playNextSignal();
            break;
        case KvBasePlayerWaiting:
            m_playing.tell(News::kDry, seconds > 0.0);
            post([this] { followDryness(); });
            break;
        default:
            break;
    }
}

void KvSDCardPlaybackView::onResponse(void* user, KvTUTKResponse* response) {
    static_cast<KvSDCardPlaybackView*>(user)->handleResponse(*response);
}

void KvSDCardPlaybackView::handleResponse(const KvTUTKResponse& response) {
    if (response.type() == IOTYPE_USER_IPCAM_DEVINFO_RESP) {
        const auto info = orvelle::SMsgAVIoctrlDeviceInfoResp::decode(response.data());
        m_totalMiB = static_cast<int>(info.totalMiB.value_or(0));
        emit updateSDCardSignal();
        return;
    }
    if (response.type() == IOTYPE_CARD_OVERVIEW_RESP) {
        if (const auto overview = orvelle::CardOverviewReply::decode(response.data()))
            post([this, overview = *overview] { onOverview(overview); });
        return;
    }
    if (response.type() == IOTYPE_USER_IPCAM_GET_TIMEZONE_RESP) {
        if (const auto zone = orvelle::TimeZoneReply::decode(response.data()).timeBase)
            post([this, zone = *zone] { onZone(zone); });
        return;
    }
    if (response.type() != IOTYPE_USER_IPCAM_LISTEVENT_VBK_RESP)
        return;
    const auto list = orvelle::SMsgAVIoctrlListEventResp_VBK::decode(response.data());
    qDebug("SMsgAVIoctrlListEventResp_VBK count = %d, misscard = %d", list.count, list.misscard);
    for (const orvelle::SAvEvent_VBK& run : list.runs) {
        qDebug("SAvEvent_VBK -> start = %d, num = %d", static_cast<int>(run.start),
               static_cast<int>(run.num));
        qDebug() << "QDateTime -> " << QDateTime::fromSecsSinceEpoch(run.start);
    }
    if (list.misscard != 0 && list.runs.isEmpty()) {
        m_totalMiB = 0;
        emit updateSDCardSignal();
        return;
    }
    emit updateVideoInfo(orvelle::runsOf(list));
}
