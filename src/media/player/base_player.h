#pragma once

#include <QObject>
#include <QString>

#include <cstdint>
#include <memory>

#include "media/stages/stream_stats.h"

class KvBasePlayerDecoder;
class KvBasePlayerInput;
class KvBasePlayerOutput;
class KvPlayerRecorder;

/// What a player tells its owner; see KvBasePlayer::setCallback().
enum KvBasePlayerEvent : int32_t {
    KvBasePlayerOpenFailed = 1,  ///< the camera is unreachable or the connection ended
    KvBasePlayerFirstFrame = 2,  ///< the first picture is shown
    KvBasePlayerVideoEnded = 3,  ///< no more pictures will come; of a live source some did
    KvBasePlayerPlayEnded = 4,   ///< the picture thread was stopped
    KvBasePlayerProgress = 5,    ///< another picture; a = its time in s, b = the duration in s
    KvBasePlayerWaiting = 6,     ///< a recording does not come fast enough: a = 1, until a = 0
};

/// Three stages in a row (input -> decoder -> output) and a recorder beside them.
///
///     input --packets--> decoder --frames--> output
///       \--tap--> recorder
///
/// It owns the stages, which concrete players create, starts and stops them in order and passes
/// their events on. All operations belong to one thread, the interface's; none waits for a
/// camera. Results are 0 or negative.
class KvBasePlayer : public QObject {
    Q_OBJECT
public:
    /// Runs on the pipeline thread that raised the event; the result is ignored.
    using EventCallback = int32_t (*)(void* user, int32_t event, double a, double b);

    explicit KvBasePlayer(QObject* parent = nullptr);
    /// The concrete player has stopped and closed in its own destructor.
    ~KvBasePlayer() override;

    /// Received bytes a second. Any thread while playing.
    virtual int speed();
    virtual int start();
    virtual void stop();
    virtual int resume();
    virtual void pause();
    virtual void seek(double seconds);
    virtual void flush();
    virtual int open();
    virtual void close();
    /// Replaces a recording in progress; negative, and there is none, when it cannot begin.
    virtual int startRecord(const QString& path, const QString& formatName, double limitSeconds);
    /// Waits until the file is closed, which takes as long as its disk does.
    virtual void stopRecord();
    /// Asks the recording to end and lets go of it: it writes what waits and closes its file by
    /// itself. Null without one.
    std::unique_ptr<KvPlayerRecorder> releaseRecord();
    virtual bool isRecording();
    /// The recording since startRecord(); null when there is none. The player's owner's thread.
    KvPlayerRecorder* recorder() const { return m_recorder.get(); }
    /// How far a recording that is started now reaches back, in seconds: it begins with a key
    /// picture.
    double recordLeadSec() const;
    virtual bool isInputRunning();
    virtual bool isRunning();
    virtual double outputTime();
    virtual double duration();
    virtual int openInput();
    virtual int openDecoder();
    virtual int openOutput();
    virtual void closeInput();
    virtual void closeDecoder();
    virtual void closeOutput();
    /// The factories; null means that the stage cannot be had now.
    virtual std::unique_ptr<KvBasePlayerInput> createInput() = 0;
    virtual std::unique_ptr<KvBasePlayerDecoder> createDecoder() = 0;
    virtual std::unique_ptr<KvBasePlayerOutput> createOutput() = 0;
    virtual void releaseInput();
    virtual void releaseDecoder();
    virtual void releaseOutput();

    /// Asks every thread of the player to end, without waiting. An owner of several players calls
    /// it on all of them before it stops the first, so that their threads end side by side.
    void requestStop();

    void setCallback(void* user, EventCallback callback);
    /// Handed to each recorder when it is made; see KvPlayerRecorder for the events.
    void setRecordCallback(void* user, EventCallback callback);
    void notify(int32_t event, double a, double b);

    /// The counters since open(). Any thread while playing, else the owner's.
    orvelle::StreamStatsSnapshot stats() const { return m_stats->snapshot(); }

protected:
    /// Whether the sound is heard, apart from a recording.
    virtual bool isSoundHeard() const { return true; }
    /// Tells the input whether anybody takes the sound; after whatever changes that.
    void followSound();
    /// Lets go of the input stage, whose packets nobody reads any more.
    std::unique_ptr<KvBasePlayerInput> takeInput();

    KvBasePlayerInput* input() const { return m_input.get(); }
    KvBasePlayerDecoder* decoder() const { return m_decoder.get(); }
    KvBasePlayerOutput* output() const { return m_output.get(); }

private:
    static void onInputEvent(void* user, int32_t event);
    static void onOutputEvent(void* user, int32_t event);
    void handleInputEvent(int32_t event);
    void handleOutputEvent(int32_t event);
    void linkStages();

    std::shared_ptr<orvelle::StreamStats> m_stats;  ///< renewed by open()
    std::unique_ptr<KvBasePlayerInput> m_input;     ///< fixed while threads run, as the two below
    std::unique_ptr<KvBasePlayerDecoder> m_decoder;
    std::unique_ptr<KvBasePlayerOutput> m_output;
    std::unique_ptr<KvPlayerRecorder> m_recorder;

    void* m_user = nullptr;  ///< fixed while threads run, as the three below
    EventCallback m_callback = nullptr;
    void* m_recordUser = nullptr;
    EventCallback m_recordCallback = nullptr;
};
