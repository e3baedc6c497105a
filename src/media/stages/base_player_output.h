#pragma once

#include <QObject>

#include <cstdint>

#include "media/stages/stream_stats.h"

class KvBasePlayerDecoder;
struct AVFrame;

/// Last stage of a player: presents the decoder's pictures and samples.
///
/// start(), stop() and the setters belong to the player's owner.
class KvBasePlayerOutput : public QObject, public orvelle::StatsHolder {
    Q_OBJECT
public:
    /// What the picture thread did, told on that thread.
    enum Event : int32_t {
        kFirstPicture = 0,
        kPicturesEnded = 1,  ///< the decoder has ended, of a live source after at least one picture
        kStopped = 2,        ///< the picture thread was asked to stop
        kPicture = 3,        ///< another picture was shown
        kDry = 4,            ///< a recording has no picture when one is due
        kGoesOn = 5,         ///< it has again
    };
    using EventCallback = void (*)(void* user, int32_t event);

    explicit KvBasePlayerOutput(QObject* parent = nullptr);

    /// Seconds, of the picture handed over last; negative before the first. Any thread.
    virtual double videoTime() = 0;
    virtual int start() = 0;
    virtual void stop() = 0;
    /// 0 when shown, negative without a place to show it. Picture thread.
    virtual int showVideo(AVFrame* frame, double seconds) = 0;
    /// May block for as long as the sound device is full. Sound thread.
    virtual int playAudio(AVFrame* frame, double seconds) = 0;
    /// True while a presenting thread has not stopped.
    virtual bool isRunning() = 0;
    virtual void flush() = 0;
    /// 0.0 is silence, 1.0 is full. Any thread.
    virtual void setVolume(double value) = 0;

    /// Asks the stage's threads to end without waiting for them; stop() still has to follow.
    virtual void requestStop() = 0;

    /// Before start().
    void setCallback(void* user, EventCallback callback);
    void notify(int32_t event);
    void setDecoder(KvBasePlayerDecoder* decoder) { m_decoder = decoder; }
    KvBasePlayerDecoder* decoder() const { return m_decoder; }

private:
    void* m_user = nullptr;  ///< fixed while threads run, as the two below
    EventCallback m_callback = nullptr;
    KvBasePlayerDecoder* m_decoder = nullptr;  ///< borrowed
};
