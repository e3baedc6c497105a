#include <QDateTime>
#include <QDir>

#include "core/file_utils.h"
#include "device/tutk_device.h"
#include "media/device_player.h"
#include "render/video_view.h"
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

constexpr double kRecordLimitSeconds = 3600.0;

QString timeStampName() {
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddHHmmss"));
}

// The clock may have been set back since a recording of that name.
QString freeVideoPath(const QString& folder) {
    const QString base = QStringLiteral("%1/%2").arg(folder, timeStampName());
    QString path = base + QStringLiteral(".mp4");
    for (int i = 2; KvFileUtils::fileExists(path); ++i)
        path = QStringLiteral("%1-%2.mp4").arg(base).arg(i);
    return path;
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
    if (!m_tutkDevice->save())
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
    m_recordPath = freeVideoPath(folder);
    qDebug().noquote() << "start record path " << m_recordPath;
    m_recordFailed = false;
    m_recordEnded = false;
    m_player->startRecord(m_recordPath, QStringLiteral("mp4"), kRecordLimitSeconds);
    KvPushButton* button = m_ui->button(UI::kRecord);
    button->setState(0);
    KvWidgetUtils::setToolTip(button, textKey("stop_recording"));
    m_ui->recordView()->setTime(0.0);
    m_ui->setRecordShown(true);
}

/// Ends a recording; the path of its file, or empty when there was none.
QString KvDevicePlayerView::endRecord() {
    if (m_recordPath.isEmpty())
        return {};
    m_player->stopRecord();
    KvPushButton* button = m_ui->button(UI::kRecord);
    button->setState(1);
    KvWidgetUtils::setToolTip(button, textKey("record_video"));
    m_ui->setRecordShown(false);
    const QString path = std::exchange(m_recordPath, QString());
    return KvFileUtils::fileExists(path) ? path : QString();
}

void KvDevicePlayerView::saveRecord() {
    const QString path = endRecord();
    if (path.isEmpty()) {
        m_toast.show(this, orvelle::text("recording_failed"));
        return;
    }
    KvDirectoryDialog(orvelle::text("the_video_you_recorded_is_save_to"), path, window())
        .execCentred(this);
}

void KvDevicePlayerView::_onClickSaveRecordButton(bool) {
    saveRecord();
}

void KvDevicePlayerView::_onClickCancelRecordButton(bool) {
    const QString path = endRecord();
    if (!path.isEmpty() && !KvFileUtils::removeFile(path))
        qCWarning(lcUi) << path << "could not be removed";
}

void KvDevicePlayerView::_doUpdateRecordTime(double seconds) {
    m_ui->recordView()->setTime(seconds);
}

/// The recording ended by itself: at its longest, or because it failed.
void KvDevicePlayerView::_doHideRecordView() {
    if (m_recordPath.isEmpty() || !m_recordEnded)
        return;
    const QString path = endRecord();
    const bool failed = m_recordFailed || path.isEmpty();
    m_toast.show(this, failed ? orvelle::text("recording_failed")
                              : orvelle::text("the_video_you_recorded_is_save_to") +
                                    QLatin1Char('\n') + QDir::toNativeSeparators(path));
}
