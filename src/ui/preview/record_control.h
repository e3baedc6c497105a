#pragma once

#include <QObject>

#include "ui/preview/tile_recording.h"
#include "ui/widgets/toast.h"

class KvDevice;
class KvDevicePlayer;

namespace orvelle {

class FolderSearch;
class NoticeBar;

/// A tile's recordings as the user meets them: the folder is looked for and asked about, a camera
/// that is lost interrupts one, which goes on when it is back, and what came of it is told over
/// the tile. Interface thread.
class RecordControl : public QObject {
    Q_OBJECT

public:
    /// `player` is borrowed; `tile` owns this and has the notices `noticeBottom` above its edge.
    RecordControl(KvDevicePlayer& player, QWidget* tile, int noticeBottom);

    /// Borrowed. What was told of the former one is not shown any more.
    void setDevice(KvDevice* device);
    const TileRecording& recording() const { return *m_recording; }

    /// Starts one, or ends and keeps the one that runs.
    void toggle();
    void requestEnd(TileRecording::End end) { m_recording->requestEnd(end); }
    /// The camera was lost.
    void interrupt();
    /// The camera is back: without a question, as nobody may be there.
    void resume();
    /// See TileRecording.
    void leave() { m_recording->leave(); }
    void forgetInterruption() { m_recording->forgetInterruption(); }

signals:
    void changed();
    /// Raised on the recorder's thread.
    void secondsChanged(double seconds);

private:
    bool mayStart(const QString& uid) const;
    void start(const QString& uid, const QString& folder, bool exists);
    void tellSaved(const RecordingResult& result);

    KvDevicePlayer& m_player;
    QWidget* const m_tile;
    KvDevice* m_device = nullptr;
    FolderSearch* const m_folderSearch;  ///< child, as the one below
    TileRecording* const m_recording;
    NoticeBar* const m_notice;  ///< child of the tile
    KvToast m_toast;
};

}  // namespace orvelle
