#include <QtDebug>

#include <utility>

#include "device/device_messages.h"
#include "device/tutk_device.h"
#include "ui/playback/calendar_dialog.h"
#include "ui/playback/sdcard_playback_view.h"
#include "ui/playback/time_line_rules.h"
#include "ui/playback/video_time_line_view.h"
#include "ui/widgets/text.h"

// What is on the card: the camera is asked, and its answers become marks.

namespace {

constexpr qint64 kRefreshMs = 60000;

}  // namespace

bool KvSDCardPlaybackView::sendRequest(uint32_t type, const QByteArray& payload) {
    return m_device->sendIOCtrl(type, payload.constData(), payload.size());
}

void KvSDCardPlaybackView::requestCardInfo(InfoRequest request) {
    const QByteArray payload(4, '\0');
    const bool isSent = sendRequest(IOTYPE_USER_IPCAM_DEVINFO_REQ, payload);
    m_infoRequest = isSent ? request : InfoRequest::kNone;
    if (request != InfoRequest::kOpening)
        return;
    if (isSent)
        awaitAnswer();
    else
        failWith(orvelle::text("the_camera_does_not_answer"));
}

/// Others ask for the same, and only the answer to its own request starts the list.
void KvSDCardPlaybackView::_doUpdateSDCard() {
    if (!m_device)
        return;
    const InfoRequest request = std::exchange(m_infoRequest, InfoRequest::kNone);
    if (m_totalMiB <= 0) {
        showNoCard();
        return;
    }
    const bool isNew = request == InfoRequest::kOpening || m_ui->isNoCardShown();
    m_ui->setNoCardShown(false);
    m_ui->setStateText(orvelle::text("replaying"));
    if (isNew) {
        m_recordings.forgetMonths();
        requestFiles(QDate::currentDate());
    }
    updateCover();
}

void KvSDCardPlaybackView::showNoCard() {
    stopPlayer();
    m_choiceTimer.stop();
    m_recordings.clear();
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
    qDebug() << "_requestDateTime -> " << m_recordings.lastAsked();
    if (!m_recordings.ask(day)) {
        qDebug("no _requestFiles");
        return;
    }
    if (sendListRequest(day))
        awaitAnswer();
    else
        onNoAnswer();
}

bool KvSDCardPlaybackView::sendListRequest(const QDate& day) {
    m_listAskedMs = nowMs();
    const auto request = orvelle::SMsgAVIoctrlListEventReq::forMonth(day);
    return sendRequest(IOTYPE_USER_IPCAM_LISTEVENT_VBK_REQ, request.encode());
}

/// Brings what the camera recorded meanwhile while the present is in sight.
void KvSDCardPlaybackView::refreshQuietly() {
    const qint64 sinceAskedMs = nowMs() - m_listAskedMs;
    if (sinceAskedMs >= answerMs())
        m_recordings.giveUpQuiet();
    const QDate today = QDate::currentDate();
    const QDate shown = QDateTime::fromSecsSinceEpoch(m_ui->timeLine()->value()).date();
    const bool isPresent = shown >= orvelle::firstOfMonth(today);
    if (sinceAskedMs < kRefreshMs || !isPresent || m_ui->isNoCardShown() || isAwaitingAnswer())
        return;
    if (m_recordings.askAgain(today, true) && !sendListRequest(today))
        m_recordings.giveUpQuiet();
}

/// For one who has come to the end of what is known.
void KvSDCardPlaybackView::lookForNewer(qint64 time) {
    if (!m_device)
        return;
    m_newerThan = time;
    const QDate today = QDate::currentDate();
    if (!m_recordings.askAgain(today, false) || sendListRequest(today))
        awaitAnswer();
    else
        onNoAnswer();
}

void KvSDCardPlaybackView::endSearch() {
    const qint64 time = std::exchange(m_newerThan, -1);
    const int index = m_recordings.indexEndingAfter(time);
    if (index >= 0)
        return playFile(index, static_cast<int>(time));
    updateCover();
    m_toast.show(this, orvelle::text("no_more_files"));
}

void KvSDCardPlaybackView::_onUpdateVideoInfo(const QVector<KvTimeLineMark>& runs) {
    if (m_device && m_recordings.answer(runs))
        emit updateMarksSignal();
}

void KvSDCardPlaybackView::_doUpdateMarks() {
    updateCover();
    if (m_recordings.isEmpty() && !m_isPlaying)
        m_ui->showNotice(orvelle::text("no_recordings"));
    else if (m_ui->timeLine()->marks().isEmpty())
        m_ui->showNotice({});
    showMarks();
    const orvelle::Recordings::Start start = m_recordings.takeStart();
    if (start.isMissing)
        m_toast.show(this, orvelle::text("no_recordings_on_this_day"));
    if (start.index >= 0)
        playFile(start.index);
    else if (m_newerThan >= 0 && !m_recordings.isAsking())
        endSearch();
}

/// Behind the limit on the left nobody has asked yet, so that it would look like nothing.
void KvSDCardPlaybackView::showMarks() {
    m_ui->timeLine()->setMarks(m_recordings.all());
    m_ui->timeLine()->setMinimum(static_cast<int>(m_recordings.earliest()));
    if (m_calendar)
        m_calendar->setMarks(m_recordings.all());
}
