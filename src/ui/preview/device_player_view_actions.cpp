#include <QDateTime>
#include <QDir>

#include "core/file_utils.h"
#include "device/tutk_device.h"
#include "media/device_player.h"
#include "render/video_surface.h"
#include "ui/dialogs/directory_dialog.h"
#include "ui/logging.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/device_record_view.h"
#include "ui/preview/media_folder.h"
#include "ui/preview/tutk_device_ptz_view.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::textKey;
using UI = KvDevicePlayerViewUI;

namespace {

constexpr int kPathToastMs = 5000;  // a path takes longer to read
constexpr double kRecordLimitSeconds = 3600.0;

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
    return orvelle::saveSnapshot(*m_ui->videoView(), m_device->uid(), name, this, m_toast);
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
    if (!m_recordPath.isEmpty())
        saveRecord();
    else if (m_device && m_player->isRunning())
        startRecord();
}

void KvDevicePlayerView::startRecord() {
    const QString folder =
        orvelle::usableMediaFolder(KvFileUtils::videoPath, m_device->uid(), this);
    // The question may have lasted longer than the stream.
    if (folder.isEmpty() || !m_player->isRunning())
        return;
    m_recordPath = QStringLiteral("%1/%2.mp4").arg(folder, timeStampName());
    qDebug().noquote() << "start record path " << m_recordPath;
    m_recordFailed = false;
    m_recordSecond = 0;
    m_recordEnded = false;
    m_player->startRecord(m_recordPath, QStringLiteral("mp4"), kRecordLimitSeconds);
    KvPushButton* button = m_ui->button(UI::kRecord);
    button->setState(0);
    KvWidgetUtils::setToolTip(button, textKey("stop_recording"));
    m_ui->setRecordShown(true);
}

/// Nobody waits for the disk here: the recording's last event goes on.
void KvDevicePlayerView::requestRecordEnd(RecordEnd end) {
    if (m_recordPath.isEmpty() || m_recordEnd != RecordEnd::kByItself)
        return;
    m_recordEnd = end;
    m_ui->setRecordShown(false);
    m_player->requestStopRecord();
}

void KvDevicePlayerView::saveRecord() {
    requestRecordEnd(RecordEnd::kSave);
}

void KvDevicePlayerView::_onClickSaveRecordButton(bool) {
    saveRecord();
}

void KvDevicePlayerView::_onClickCancelRecordButton(bool) {
    requestRecordEnd(RecordEnd::kDiscard);
}

void KvDevicePlayerView::_doUpdateRecordTime(double seconds) {
    m_ui->setRecordTime(seconds);
}

void KvDevicePlayerView::_doHideRecordView() {
    if (m_recordPath.isEmpty() || !m_recordEnded)
        return;
    const RecordEnd end = m_recordEnd;
    const QString path = endRecord();
    if (end == RecordEnd::kDiscard) {
        if (!path.isEmpty() && !KvFileUtils::removeFile(path))
            qCWarning(lcUi) << path << "could not be removed";
    } else if (end == RecordEnd::kSave && !path.isEmpty() && !m_recordFailed) {
        KvDirectoryDialog(orvelle::text("the_video_you_recorded_is_save_to"), path, window())
            .execCentred(this);
    } else {
        tellRecordEnd(path);
    }
}

/// Ends a recording; the path of its file, or empty when there is none.
QString KvDevicePlayerView::endRecord() {
    if (m_recordPath.isEmpty())
        return {};
    const QString path = m_player->recordPath();
    m_player->stopRecord();
    m_recordPath.clear();
    m_recordEnd = RecordEnd::kByItself;
    KvPushButton* button = m_ui->button(UI::kRecord);
    button->setState(1);
    KvWidgetUtils::setToolTip(button, textKey("record_video"));
    m_ui->setRecordShown(false);
    updateButtons();
    return KvFileUtils::fileExists(path) ? path : QString();
}

/// The stream ends under the recording: what was recorded up to here is kept, unless it was to go.
void KvDevicePlayerView::closeRecord() {
    if (m_recordPath.isEmpty())
        return;
    const RecordEnd end = m_recordEnd;
    const QString path = endRecord();
    if (end == RecordEnd::kDiscard)
        KvFileUtils::removeFile(path);
    else
        tellRecordEnd(path);
}

void KvDevicePlayerView::tellRecordEnd(const QString& path) {
    if (path.isEmpty()) {
        m_toast.show(this, m_recordFailed ? orvelle::text("recording_failed")
                                          : orvelle::text("recording_too_short"));
        return;
    }
    const QString what = m_recordFailed ? orvelle::text("the_recording_ended_early_it_is_saved_to")
                                        : orvelle::text("the_video_you_recorded_is_save_to");
    m_toast.show(this, what + QLatin1Char('\n') + QDir::toNativeSeparators(path),
                 KvToast::kBottomCentre, kPathToastMs);
}
