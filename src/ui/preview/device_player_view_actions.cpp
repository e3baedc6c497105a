#include <QDateTime>
#include <QDir>

#include "core/file_utils.h"
#include "device/tutk_device.h"
#include "media/live/device_player.h"
#include "render/video_surface.h"
#include "ui/dialogs/directory_dialog.h"
#include "ui/logging.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/device_record_view.h"
#include "ui/preview/folder_search.h"
#include "ui/preview/media_folder.h"
#include "ui/preview/tile_recording.h"
#include "ui/preview/tutk_device_ptz_view.h"
#include "ui/widgets/notice_bar.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::textKey;
using orvelle::TileRecording;
using UI = KvDevicePlayerViewUI;

namespace {

QString timeStampName() {
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddHHmmss"));
}

}  // namespace

void KvDevicePlayerView::_onClickUISdcardButton(bool) {
    emit clickSDCardButton(this);
}

void KvDevicePlayerView::_onClickUICloseButton(bool) {
    qDebug("_onClickUICloseButton");
    emit clickCloseButton(this);
}

void KvDevicePlayerView::_onClickUISettingsButton(bool) {
    qDebug("_onClickUISettingsButton");
    emit clickSettingButton(this);
}

void KvDevicePlayerView::_onClickUIPlayButton(bool) {
    if (m_player->isRunning()) {
        m_player->pause();
        m_ui->setSpeedText({});
        showPlaying(false);
    } else if (m_player->isInputRunning()) {
        m_lastPictureMs = nowMs();
        m_player->resume();
        showPlaying(true);
    }
    updateButtons();
}

/// The camera decides the quality; the button only shows it.
void KvDevicePlayerView::_onClickUIHdButton(bool) {}

void KvDevicePlayerView::_onClickUIVolumeButton(bool) {
    if (!m_player->isRunning())
        return;
    const bool wasOn = m_ui->button(UI::kSound)->state() == 0;
    qDebug("volume = %d", wasOn ? 0 : 1);
    const double volume = wasOn ? 0.0 : 1.0;
    setVolume(volume);
    if (m_noSound || !m_tutkDevice)
        return;
    m_tutkDevice->setVolume(volume);
    if (!m_tutkDevice->saveLater())
        qCWarning(lcUi) << "the volume of" << m_device->uid() << "could not be saved";
}

void KvDevicePlayerView::_onClickUIFullscreenButton(bool) {
    const bool wasFullscreen = window()->isFullScreen();
    qDebug("%s", wasFullscreen ? "full -> not full" : "not full -> full");
    setFullscreen(!wasFullscreen);
    emit clickFullButton(this, !wasFullscreen);
}

void KvDevicePlayerView::_onDoubleClickVideoView() {
    _onClickUIFullscreenButton(false);
}

void KvDevicePlayerView::_onClickUIPtzButton(bool) {
    if (m_player->isRunning())
        setPtzShown(m_ui->ptzView()->isHidden());
}

QString KvDevicePlayerView::capture(const QString& name) {
    if (!m_device)
        return {};
    return orvelle::saveSnapshot(*m_ui->videoView(), m_device->uid(), name,
                                 QDateTime::currentDateTime(), this, m_toast);
}

void KvDevicePlayerView::_onClickUICaptureButton(bool) {
    if (!m_player->isRunning())
        return;
    const QString path = capture(timeStampName());
    if (path.isEmpty())
        return;
    KvDirectoryDialog(orvelle::text("the_screenshot_you_recorded_is_save_to"), path, window())
        .execCentred(this);
}

void KvDevicePlayerView::_onClickUIRecordButton(bool) {
    if (m_recording->isRunning())
        m_recording->requestEnd(TileRecording::End::kSave);
    else if (m_device && m_player->isRunning())
        m_folderSearch->start(KvFileUtils::videoPath, m_device->uid());
}

/// The answer may have lasted longer than the stream.
void KvDevicePlayerView::startRecord(const QString& uid, const QString& folder, bool exists) {
    const auto isWanted = [this, &uid] {
        return m_device && m_device->uid() == uid && m_player->isRunning() &&
               !m_recording->isRunning();
    };
    if (!isWanted())
        return;
    if (exists)
        m_recording->start(folder);
    else if (orvelle::agreesToDefaultFolder(this) && isWanted())
        m_recording->start(KvFileUtils::videoPath(uid));
    if (m_recording->isRunning())
        orvelle::nameMediaFolder(uid);
}

bool KvDevicePlayerView::isRecording() const {
    return m_recording->isRecording();
}

void KvDevicePlayerView::updateRecordControls() {
    KvPushButton* button = m_ui->button(UI::kRecord);
    const bool isRunning = m_recording->isRunning();
    button->setState(isRunning ? 0 : 1);
    KvWidgetUtils::setToolTip(button,
                              isRunning ? textKey("stop_recording") : textKey("record_video"));
    if (m_recording->isRecording())
        m_ui->setRecordShown(true);
    else
        emit hideRecordView();
    updateButtons();
}

void KvDevicePlayerView::_onClickSaveRecordButton(bool) {
    m_recording->requestEnd(TileRecording::End::kSave);
}

void KvDevicePlayerView::_onClickCancelRecordButton(bool) {
    m_recording->requestEnd(TileRecording::End::kDiscard);
}

void KvDevicePlayerView::_doUpdateRecordTime(double seconds) {
    m_ui->setRecordTime(seconds);
}

void KvDevicePlayerView::_doHideRecordView() {
    m_ui->setRecordShown(false);
}

void KvDevicePlayerView::tellSaved(const orvelle::RecordingResult& result) {
    QString what = orvelle::text("the_video_you_recorded_is_save_to");
    if (result.lacksSound)
        what.prepend(orvelle::text("recorded_without_sound") + QLatin1Char('\n'));
    KvDirectoryDialog(what, result.files.last(), window()).execCentred(this);
}

/// The camera was lost under the recording.
void KvDevicePlayerView::interruptRecord() {
    if (!m_recording->isRecording())
        return;
    const QString path = m_recording->interrupt();
    QString news = orvelle::text("the_recording_ended_early_and_goes_on_with_the_camera");
    if (!path.isEmpty())
        news += QLatin1Char('\n') + QDir::toNativeSeparators(path);
    m_recordNotice->add(news);
}

/// The camera is back: without a question, as nobody may be there.
void KvDevicePlayerView::resumeRecord() {
    if (m_recording->isInterrupted())
        m_recording->start(m_recording->interruptedFolder());
}
