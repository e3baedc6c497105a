#include "ui/preview/tile_recording.h"

#include <QDateTime>
#include <QFile>
#include <QtDebug>

#include <cmath>

#include "device/device_manager.h"
#include "media/live/device_player.h"
#include "media/recording/player_recorder.h"
#include "ui/preview/recording_news.h"

namespace orvelle {

namespace {

constexpr double kLimitSeconds = 3600.0;

QString nameOf(const QDateTime& time) {
    return time.toString(QStringLiteral("yyyyMMddHHmmss"));
}

/// Of a recording that had ended before it could be asked to drop them. Returns at once.
void removeLater(const QStringList& files) {
    KvDeviceManager* const manager = KvDeviceManager::instance();
    if (!manager)
        return;
    for (const QString& file : files) {
        manager->fileWriter().run(file, [file] {
            if (!QFile::remove(file))
                qWarning().noquote() << file << "could not be removed";
            return true;
        });
    }
}

}  // namespace

TileRecording::TileRecording(KvDevicePlayer& player, QObject* parent)
    : QObject(parent), m_player(player) {
    m_player.setRecordCallback(this, onEvent);
    connect(this, &TileRecording::endedSignal, this, &TileRecording::handleEnd,
            Qt::QueuedConnection);
}

void TileRecording::start(const QString& folder) {
    m_interruptedFolder.clear();
    const qint64 leadMs = std::llround(1000 * m_player.recordLeadSec());
    const QString path = QStringLiteral("%1/%2.mp4")
                             .arg(folder, nameOf(QDateTime::currentDateTime().addMSecs(-leadMs)));
    qDebug().noquote() << "start record path " << path;
    m_folder = folder;
    m_second = 0;
    m_end = End::kByItself;
    m_isRunning = m_player.startRecord(path, QStringLiteral("mp4"), kLimitSeconds) >= 0;
    if (!m_isRunning)
        RecordingNews::instance().add({{}, RecordingFault::kOther, false});
    emit stateChanged();
}

void TileRecording::requestEnd(End end) {
    if (!isRecording() || end == End::kByItself)
        return;
    m_end = end;
    if (KvPlayerRecorder* recorder = m_player.recorder())
        end == End::kDiscard ? recorder->requestDiscard() : recorder->requestStop();
    emit stateChanged();
}

/// On the recorder's thread.
int32_t TileRecording::onEvent(void* user, int32_t event, double seconds, double) {
    auto& recording = *static_cast<TileRecording*>(user);
    const int second = static_cast<int>(seconds);
    if (event == KvPlayerRecorder::kEnded || event == KvPlayerRecorder::kFailed)
        emit recording.endedSignal();
    // It comes with every packet, and whole seconds are shown.
    else if (event == KvPlayerRecorder::kProgress && recording.m_second.exchange(second) != second)
        emit recording.secondsChanged(seconds);
    return 0;
}

void TileRecording::handleEnd() {
    // It may be of a recording that was let go of, after which another one runs.
    if (!m_isRunning || !m_player.recorder() || !m_player.recorder()->hasEnded())
        return;
    const std::unique_ptr<KvPlayerRecorder> recorder = m_player.releaseRecord();
    recorder->stop();
    const RecordingResult result = recorder->result();
    const End end = m_end;
    reset();
    if (end == End::kDiscard)
        removeLater(result.files);
    else if (result.fault != RecordingFault::kNone)
        RecordingNews::instance().add(result);
    else if (result.files.isEmpty())
        emit nothingSaved();
    else
        emit saved(result);
}

void TileRecording::leave() {
    if (m_isRunning)
        release(false);
}

QString TileRecording::interrupt() {
    if (!isRecording())
        return {};
    m_interruptedFolder = m_folder;
    return release(true);
}

QString TileRecording::release(bool isTold) {
    std::unique_ptr<KvPlayerRecorder> recorder = m_player.releaseRecord();
    const QString path = recorder && recorder->hasFile() ? recorder->path() : QString();
    RecordingNews::instance().endLater(std::move(recorder), isTold);
    reset();
    return path;
}

void TileRecording::reset() {
    m_isRunning = false;
    m_end = End::kByItself;
    emit stateChanged();
}

}  // namespace orvelle
