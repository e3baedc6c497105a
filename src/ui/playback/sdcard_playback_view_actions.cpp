#include <QPointer>
#include <QtDebug>

#include "device/tutk_device.h"
#include "media/live/tutk_player.h"
#include "render/video_surface.h"
#include "ui/dialogs/directory_dialog.h"
#include "ui/playback/calendar_dialog.h"
#include "ui/playback/sdcard_playback_view.h"
#include "ui/playback/video_time_line_view.h"
#include "ui/preview/media_folder.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"

using UI = KvSDCardPlaybackViewUI;

int KvSDCardPlaybackView::startPlayer(const QDateTime& start) {
    m_player->setStartTime(start);
    return m_player->play();
}

orvelle::PlaybackEnd KvSDCardPlaybackView::playbackEnd() const {
    return m_player->endReason();
}

/// A click soon after another is one too many, as a camera needs its time to change files.
bool KvSDCardPlaybackView::playOnRequest(int index, int from) {
    if (!m_clickGuard.accepts(nowMs()))
        return false;
    m_choiceTimer.stop();
    playFile(index, from);
    return true;
}

/// Of the moments that are chosen too soon after another the last one is played, a little later.
void KvSDCardPlaybackView::playChoice(int time) {
    const int index = m_recordings.indexAt(time);
    if (index < 0 || playOnRequest(index, time))
        return;
    m_pendingChoice = time;
    if (!m_ui->timeLine()->isDragging())
        m_ui->setMoment(time);
    m_choiceTimer.start(static_cast<int>(m_clickGuard.remaining(nowMs())));
}

void KvSDCardPlaybackView::playPendingChoice() {
    playChoice(m_pendingChoice);
}

/// By the user, so that what plays must not move it.
bool KvSDCardPlaybackView::isTimeLineTaken() const {
    return m_ui->timeLine()->isDragging() || m_choiceTimer.isActive();
}

bool KvSDCardPlaybackView::isPaused() const {
    return m_isPlaying && !m_ui->timeLine()->isPlayChecked();
}

void KvSDCardPlaybackView::playFile(int index, int from) {
    stopPlayer();
    const KvTimeLineMark mark = m_recordings.select(index);
    m_playedFrom = mark.contains(from) ? from : mark.start;
    m_ui->showNotice({});
    if (!isTimeLineTaken())
        m_ui->setMoment(m_playedFrom);
    applyVolume();
    if (startPlayer(QDateTime::fromSecsSinceEpoch(m_playedFrom)) < 0) {
        failWith(orvelle::text("the_recording_could_not_be_played"));
        return;
    }
    m_isPlaying = true;
    m_isLoading = true;
    m_ui->timeLine()->setPlayChecked(true);
    m_ui->setNoCardShown(false);
    awaitAnswer();
}

void KvSDCardPlaybackView::stopPlayer() {
    m_player->shutdown();
    m_openFailed = false;
    m_firstPicture = false;
    m_ended = false;
    m_isPlaying = false;
    m_isLoading = false;
    m_newerThan = -1;
    m_ui->timeLine()->setPlayChecked(false);
}

void KvSDCardPlaybackView::_doHideLoadingView() {
    if (!m_firstPicture.exchange(false))
        return;
    m_isLoading = false;
    m_hasPicture = true;
    if (isPaused())
        m_player->pause();
    updateCover();
}

void KvSDCardPlaybackView::_doUpdateTimeLineView(double seconds) {
    // Before its first picture, what comes is of the file before.
    if (!m_isPlaying || m_isLoading || isTimeLineTaken())
        return;
    const int moment = m_playedFrom + qRound(seconds);
    if (moment != m_ui->timeLine()->value())
        m_ui->setMoment(moment);
}

void KvSDCardPlaybackView::_doPlayNext() {
    // The end that meets a pause waits for the user to go on.
    if (isPaused() || !m_ended.exchange(false))
        return;
    const int next = m_recordings.next();
    if (next >= 0) {
        playFile(next);
        return;
    }
    stopPlayer();
    lookForNewer(m_recordings.currentEnd());
}

void KvSDCardPlaybackView::_doPlayFailed() {
    if (!m_openFailed.exchange(false) || !m_device)
        return;
    const bool isLost = playbackEnd() == orvelle::PlaybackEnd::kLost;
    failWith(isLost ? orvelle::text("the_connection_to_the_camera_was_lost")
                    : orvelle::text("the_recording_could_not_be_played"));
    requestCardInfo(InfoRequest::kCheck);
}

void KvSDCardPlaybackView::_onSelectedVideoTime(int time) {
    m_newerThan = -1;
    m_choiceTimer.stop();
    if (_findDateTimeIndex(QDateTime::fromSecsSinceEpoch(time)) >= 0)
        playChoice(time);
    else
        lookForNewer(time);
}

void KvSDCardPlaybackView::_onClickPrev() {
    if (const int index = m_recordings.previous(); index >= 0)
        playOnRequest(index);
    else
        m_toast.show(this, orvelle::text("no_more_files"));
}

void KvSDCardPlaybackView::_onClickNext() {
    if (const int index = m_recordings.next(); index >= 0)
        playOnRequest(index);
    else if (m_clickGuard.accepts(nowMs()))
        lookForNewer(m_recordings.currentEnd());
}

/// A pause before the first picture begins with it, as there would be nothing to see.
void KvSDCardPlaybackView::_onClickPlay(bool checked) {
    if (m_isLoading)
        return;
    if (m_isPlaying && !checked) {
        m_player->pause();
        updateCover();
    } else if (m_isPlaying && m_ended) {
        _doPlayNext();
    } else if (m_isPlaying) {
        m_player->resume();
    } else if (checked) {
        playAgain();
    }
}

void KvSDCardPlaybackView::playAgain() {
    const int from = m_ui->timeLine()->value();
    int index = m_recordings.indexAt(from);
    if (index < 0)
        index = m_recordings.current();
    if (index < 0)
        index = m_recordings.all().size() - 1;
    if (index >= 0)
        playOnRequest(index, from);
    m_ui->timeLine()->setPlayChecked(m_isPlaying);
}

int KvSDCardPlaybackView::_findDateTimeIndex(const QDateTime& time) const {
    return m_recordings.indexAt(time.toSecsSinceEpoch());
}

int KvSDCardPlaybackView::_findDateIndex(const QDate& date) const {
    return m_recordings.indexOn(date);
}

void KvSDCardPlaybackView::_onClickCalendar(QDate date) {
    requestFiles(date);
}

void KvSDCardPlaybackView::_onClickCalendarButton(bool) {
    if (!m_device)
        return;
    if (!m_calendar) {
        using View = KvSDCardPlaybackView;
        m_calendar = new KvCalendarDialog(this);
        connect(m_calendar, &KvCalendarDialog::clickDate, this, &View::_onClickCalendar);
        connect(m_calendar, &KvCalendarDialog::monthChanged, this, &View::_onClickCalendar);
    }
    const int current = m_recordings.current();
    m_calendar->setMarks(m_recordings.all());
    m_calendar->setDate(
        current < 0 ? QDate::currentDate()
                    : QDateTime::fromSecsSinceEpoch(m_recordings.all().at(current).start).date());
    const QPointer<KvSDCardPlaybackView> self(this);
    const bool isChosen = m_calendar->execCentred(this) != 0;
    if (self && isChosen && m_device && m_calendar->date().isValid())
        playDay(m_calendar->date());
}

void KvSDCardPlaybackView::playDay(const QDate& day) {
    const int index = _findDateIndex(day);
    qDebug() << "calendar date = " << day << ", index = " << index;
    if (index >= 0) {
        m_recordings.awaitDay({});
        playChoice(m_recordings.all().at(index).start);
        return;
    }
    requestFiles(day);
    if (m_recordings.isAnswerPending(day))
        m_recordings.awaitDay(day);
    else
        m_toast.show(this, orvelle::text("no_recordings_on_this_day"));
}

void KvSDCardPlaybackView::_onClickBackButton(bool) {
    releaseDevice();
    emit clickBackButton();
}

void KvSDCardPlaybackView::_onClickCapture(bool) {
    if (!m_device)
        return;
    const QString name = QDateTime::currentDateTime().toString(QStringLiteral("yyMMddHHmmss"));
    const QString path =
        orvelle::saveSnapshot(*m_ui->videoView(), m_device->uid(), name, this, m_toast);
    if (!path.isEmpty())
        KvDirectoryDialog(orvelle::text("the_screenshot_you_recorded_is_save_to"), path, window())
            .execCentred(this);
}

void KvSDCardPlaybackView::_onClickVolume(bool) {
    KvPushButton* button = m_ui->button(UI::kSound);
    button->setState(1 - button->state());
    applyVolume();
}

void KvSDCardPlaybackView::applyVolume() {
    m_player->setVolume(m_ui->button(UI::kSound)->state() != 0 ? 0.0 : 1.0);
}
