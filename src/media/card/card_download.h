#pragma once

#include <QString>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "core/thread.h"
#include "media/card/tutk_playback_input.h"
#include "media/recording/recording_file.h"

class KvTUTKDevice;

namespace orvelle {

/// Fetches what was recorded in some stretches of time from a camera's card into one MP4 file, as
/// fast as the path takes it and beside what is played. Nothing is decoded: pictures, and sound
/// that the format can hold, keep their bytes. Each stretch begins with the key picture before it.
///
/// The file is called PATH.part until it is whole. A camera that goes away, or does not play for
/// now, is waited for, and the download goes on behind the last picture that it got; so it does
/// after a pause. What was stopped before its end leaves no file behind; what its disk cannot hold
/// ends with what was fetched.
///
/// The device is borrowed until detach() returned; the thread may go on to wait for its disk. State
/// and progress may be asked from any thread.
class CardDownload : public KvThread {
public:
    /// Recordings that follow each other minute by minute, or a part of them.
    struct Stretch {
        int64_t recordingsSec = 0;  ///< start of the first recording, seconds since 1970
        int64_t fromSec = 0;
        int64_t toSec = 0;  ///< not included
    };
    enum class State {
        kRunning,
        kPaused,
        kWaiting,  ///< for the camera
        kDone,
        kNothing,     ///< none of it is on the card any more
        kNotWritten,  ///< the folder takes nothing
        kStopped,
    };

    /// In order of time; `path` ends with ".mp4".
    CardDownload(KvTUTKDevice* device, std::vector<Stretch> stretches, QString path);
    ~CardDownload() override;  ///< stops

    void run() override;

    /// Stops, and lets go of the device without waiting for the disk. The owner's thread.
    void detach();

    /// Ends the camera's sending; resume() goes on.
    void pause() { m_isPaused = true; }
    void resume() { m_isPaused = false; }
    bool isPaused() const { return m_isPaused; }

    State state() const { return m_state; }
    bool isOver() const { return m_state >= State::kDone; }
    /// Of the wanted time, from 0 to 1.
    double progress() const { return m_progress; }
    uint64_t receivedBytes() const { return m_receivedBytes; }
    /// Minutes that the camera could not send, of which nothing is in the file.
    int missingMinutes() const { return m_missingMinutes; }
    /// Of the finished file, once the state is kDone, and of what could be kept when it is
    /// kNotWritten; still PATH.part where no other name could be given.
    QString path() const { return m_finalPath; }
    /// What ended it, once the state is kNotWritten.
    RecordingFault fault() const { return recordingFaultOf(m_error); }

private:
    enum class Outcome { kReached, kEnded, kMissing, kRefused, kLost, kInterrupted, kNotWritten };

    State fetchAll();
    bool fetchStretch(const Stretch& stretch);
    Outcome fetchFrom(const Stretch& stretch, int64_t fromSec);
    Outcome receive(const Stretch& stretch, int64_t fromSec);
    Outcome outcomeOfEnd();
    bool openInput(const Stretch& stretch, int64_t fromSec);
    void closeInput();
    std::unique_ptr<KvBasePlayerInputPacket> nextPicture(int64_t fromSec, bool* hasEnded);
    std::unique_ptr<KvBasePlayerInputPacket> nextSound(int64_t fromSec);
    int writePicture(KvBasePlayerInputPacket& packet);
    int writeSounds(const Stretch& stretch, int64_t fromSec);
    int createFile(const KvBasePlayerInputPacket* sound);
    int64_t nextMinute(const Stretch& stretch) const;
    bool waitWhilePaused();
    bool waitForCamera();
    void noteProgress(const Stretch& stretch);
    State finish();
    QString nameFile(const QString& part);

    const std::vector<Stretch> m_stretches;
    const QString m_path;

    // Own thread.
    std::unique_ptr<RecordingFile> m_file;
    std::vector<std::unique_ptr<KvBasePlayerInputPacket>> m_heldPictures;  ///< before the file
    double m_pictureSec = 0.0;  ///< moment of the last one written, seconds since 1970
    double m_soundSec = 0.0;
    int64_t m_triedSec = 0;  ///< behind what was tried of this stretch
    double m_doneSec = 0.0;  ///< of the stretches before
    double m_totalSec = 0.0;
    int m_error = 0;      ///< of the file; written before the state says that it is over
    QString m_finalPath;  ///< written before the state says that it is done

    std::mutex m_deviceMutex;  ///< guards the two below; not held while anything is written
    KvTUTKDevice* m_device;    ///< null once detached
    std::unique_ptr<KvTUTKPlaybackInput> m_input;  ///< closed once detached

    std::atomic<bool> m_isPaused{false};
    std::atomic<State> m_state{State::kRunning};
    std::atomic<double> m_progress{0.0};
    std::atomic<uint64_t> m_receivedBytes{0};
    std::atomic<int> m_missingMinutes{0};
};

}  // namespace orvelle
