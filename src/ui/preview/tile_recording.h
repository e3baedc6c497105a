#pragma once

#include <QObject>
#include <QString>

#include <atomic>
#include <cstdint>

#include "media/stages/recording_result.h"

class KvDevicePlayer;

namespace orvelle {

/// The life of a tile's recordings: whether one runs, its name and what came of it. Nothing here
/// waits for a disk. Interface thread; the recorder's thread reaches it through its signals only.
///
///     idle --start()--> recording --requestEnd()--> ending --file closed--> idle: saved(), ...
///                           \------ stream ends: leave(), interrupt() ------> idle
class TileRecording : public QObject {
    Q_OBJECT
public:
    enum class End { kByItself, kSave, kDiscard };

    /// The player is borrowed, and outlives what is done here; its record callback is taken.
    explicit TileRecording(KvDevicePlayer& player, QObject* parent = nullptr);

    /// From start() until the file is closed or let go of.
    bool isRunning() const { return m_isRunning; }
    bool isRecording() const { return m_isRunning && m_end == End::kByItself; }
    /// The stream ended under a recording, which goes on in a new file with the next start().
    bool isInterrupted() const { return !m_interruptedFolder.isEmpty(); }
    QString interruptedFolder() const { return m_interruptedFolder; }

    /// The file is named after its first picture's time.
    void start(const QString& folder);
    /// One of the last three signals follows.
    void requestEnd(End end);
    /// The stream ends: what there is, is saved in the background, and the news tell.
    void leave();
    /// The same for a camera that was lost, of which the tile tells: the file, if there is one.
    QString interrupt();
    /// It is not to go on.
    void forgetInterruption() { m_interruptedFolder.clear(); }

signals:
    void stateChanged();
    /// Once a second at most. Raised on the recorder's thread.
    void secondsChanged(double seconds);
    /// As it was asked for; nothing was lost.
    void saved(const orvelle::RecordingResult& result);
    void nothingSaved();

    void endedSignal();  ///< raised on the recorder's thread

private:
    static int32_t onEvent(void* user, int32_t event, double seconds, double);
    void handleEnd();
    void reset();
    QString release(bool isTold);

    KvDevicePlayer& m_player;
    bool m_isRunning = false;
    End m_end = End::kByItself;  ///< as asked for
    QString m_folder;
    QString m_interruptedFolder;
    std::atomic<int> m_second{0};  ///< last told; orders nothing
};

}  // namespace orvelle
