#include "ui/preview/record_control.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>

#include "core/file_utils.h"
#include "device/device.h"
#include "media/live/device_player.h"
#include "ui/dialogs/directory_dialog.h"
#include "ui/preview/folder_search.h"
#include "ui/preview/media_folder.h"
#include "ui/preview/recording_news.h"
#include "ui/widgets/notice_bar.h"
#include "ui/widgets/text.h"

namespace orvelle {

RecordControl::RecordControl(KvDevicePlayer& player, QWidget* tile, int noticeBottom)
    : QObject(tile),
      m_player(player),
      m_tile(tile),
      m_folderSearch(new FolderSearch(this)),
      m_recording(new TileRecording(player, this)),
      m_notice(new NoticeBar(tile, noticeBottom)) {
    connect(m_folderSearch, &FolderSearch::found, this, &RecordControl::start);
    connect(m_recording, &TileRecording::stateChanged, this, &RecordControl::changed);
    connect(m_recording, &TileRecording::secondsChanged, this, &RecordControl::secondsChanged);
    connect(m_recording, &TileRecording::saved, this, &RecordControl::tellSaved);
    connect(m_recording, &TileRecording::nothingSaved, this,
            [this] { m_toast.show(m_tile, text("recording_too_short")); });
}

void RecordControl::setDevice(KvDevice* device) {
    m_notice->dismiss();
    m_device = device;
}

void RecordControl::toggle() {
    if (m_recording->isRunning())
        m_recording->requestEnd(TileRecording::End::kSave);
    else if (m_folderSearch->isRunning())
        m_toast.show(m_tile, text("the_folder_does_not_answer_yet"));
    else if (m_device && m_player.isRunning())
        m_folderSearch->start(KvFileUtils::videoPath, m_device->uid());
}

bool RecordControl::mayStart(const QString& uid) const {
    return m_device && m_device->uid() == uid && m_player.isRunning() && !m_recording->isRunning();
}

/// The answer may have lasted longer than the stream.
void RecordControl::start(const QString& uid, const QString& folder, bool exists) {
    if (!mayStart(uid))
        return;
    if (exists)
        m_recording->start(folder);
    else if (agreesToDefaultFolder(m_tile) && mayStart(uid))
        m_recording->start(KvFileUtils::videoPath(uid));
    if (m_recording->isRunning())
        nameMediaFolder(uid);
}

/// One box at a time: whatever ends meanwhile is told together.
void RecordControl::tellSaved(const RecordingResult& result) {
    if (QApplication::activeModalWidget()) {
        RecordingNews::instance().add(result);
        return;
    }
    QString what = text("the_video_you_recorded_is_save_to");
    if (result.lacksSound)
        what.prepend(text("recorded_without_sound") + QLatin1Char('\n'));
    // Several are in one folder.
    const QString& file = result.files.last();
    const QString place = result.files.size() > 1 ? QFileInfo(file).absolutePath() : file;
    KvDirectoryDialog(what, place, m_tile->window()).execCentred(m_tile);
}

void RecordControl::interrupt() {
    if (!m_recording->isRecording())
        return;
    const QString path = m_recording->interrupt();
    QString news = text("the_recording_ended_early_and_goes_on_with_the_camera");
    if (!path.isEmpty())
        news += QLatin1Char('\n') + QDir::toNativeSeparators(path);
    m_notice->add(news);
}

void RecordControl::resume() {
    if (m_recording->isInterrupted())
        m_recording->start(m_recording->interruptedFolder());
}

}  // namespace orvelle
