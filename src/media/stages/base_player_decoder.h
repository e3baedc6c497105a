#pragma once

#include <QObject>

#include <cstdint>

#include "media/stages/stream_parameters.h"
#include "media/stages/stream_stats.h"

class KvBasePlayerDecoderFrame;
class KvBasePlayerInput;
class KvThread;
struct AVCodecContext;

/// Middle stage of a player: turns the input's packets into pictures and samples.
///
/// start() and stop() belong to the player's owner; read...() and wait...() are called by the
/// output's threads, which end before stop().
class KvBasePlayerDecoder : public QObject, public orvelle::StatsHolder {
    Q_OBJECT
public:
    using EventCallback = void (*)(void* user, int32_t event);

    explicit KvBasePlayerDecoder(QObject* parent = nullptr);

    virtual int start() = 0;
    virtual void stop() = 0;
    /// The open contexts, null when none; they belong to the decoding threads alone.
    virtual AVCodecContext* videoCodecContext() = 0;
    virtual AVCodecContext* audioCodecContext() = 0;
    /// 0 and a frame that the caller owns, or -1 when none waits.
    virtual int readVideoFrame(KvBasePlayerDecoderFrame** frame) = 0;
    virtual int readAudioFrame(KvBasePlayerDecoderFrame** frame) = 0;
    virtual void releaseVideoFrame(KvBasePlayerDecoderFrame* frame) = 0;
    virtual void releaseAudioFrame(KvBasePlayerDecoderFrame* frame) = 0;
    /// True while a decoding thread has not stopped. Any thread between start() and stop().
    virtual bool isRunning() = 0;
    virtual void flush() = 0;
    /// False spares decoding sound that nobody hears, once its parameters are known. Any thread.
    virtual void setSoundWanted(bool) {}
    /// True decodes no picture but key pictures, until false and the next one of them. Any thread.
    virtual void setKeyPicturesOnly(bool) {}

    /// Waits until a frame waits, the decoder has ended, `timeoutMs` passed or `reader` is asked
    /// to stop (whoever asks it calls wakeReaders() next). True when a frame waits.
    virtual bool waitForVideoFrame(const KvThread& reader, int timeoutMs) = 0;
    virtual bool waitForAudioFrame(const KvThread& reader, int timeoutMs) = 0;
    virtual void wakeReaders() = 0;
    /// Asks the stage's threads to end without waiting for them; stop() still has to follow.
    virtual void requestStop() = 0;

    /// Copies of what is known of the streams being decoded; empty while nothing is. Any thread.
    virtual orvelle::StreamParameters videoParameters() { return {}; }
    virtual orvelle::StreamParameters audioParameters() { return {}; }

    /// Before start().
    void setCallback(void* user, EventCallback callback);
    void notify(int32_t event);
    void setInput(KvBasePlayerInput* input) { m_input = input; }
    KvBasePlayerInput* input() const { return m_input; }

private:
    void* m_user = nullptr;  ///< fixed while threads run, as the two below
    EventCallback m_callback = nullptr;
    KvBasePlayerInput* m_input = nullptr;  ///< borrowed
};
