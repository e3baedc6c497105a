#pragma once

#include <atomic>
#include <memory>

#include "core/thread.h"
#include "frames/decoder_frame.h"
#include "frames/mutex_queue.h"
#include "media/player/open_codec.h"
#include "media/player/video_frame_filter.h"
#include "media/stages/base_player_decoder.h"
#include "media/stages/damage_span.h"
#include "media/stages/error_run.h"

class KvBasePlayerInputPacket;
class KvPlayerDecoder;

/// Runs one decoding loop of its decoder.
class KvPlayerDecoderThread : public KvThread {
public:
    KvPlayerDecoderThread(const QString& name, KvPlayerDecoder* decoder)
        : KvThread(name), m_decoder(decoder) {}

protected:
    KvPlayerDecoder* const m_decoder;  ///< borrowed; outlives the thread
};

class KvPlayerDecoderVideoThread : public KvPlayerDecoderThread {
public:
    explicit KvPlayerDecoderVideoThread(KvPlayerDecoder* decoder);
    void run() override;
};

class KvPlayerDecoderAudioThread : public KvPlayerDecoderThread {
public:
    explicit KvPlayerDecoderAudioThread(KvPlayerDecoder* decoder);
    void run() override;
};

/// The decoder stage of every player: one thread for pictures, one for sound.
///
/// The codec follows the packets. Pictures start at a key frame, leave in planar 4:2:0 and are
/// withheld for a DamageSpan after one that is damaged; at most three wait. At most half a second
/// of sound waits: of a live source, a sound device slower than the camera's clock costs sound, not
/// delay; of a recording, no more is decoded until there is room. What has a time below 0 only
/// leads to what is wanted: it is decoded and does not leave.
class KvPlayerDecoder : public KvBasePlayerDecoder {
    Q_OBJECT
public:
    explicit KvPlayerDecoder(QObject* parent = nullptr);
    ~KvPlayerDecoder() override;

    int start() override;
    void stop() override;
    AVCodecContext* videoCodecContext() override;
    AVCodecContext* audioCodecContext() override;
    int readVideoFrame(KvBasePlayerDecoderFrame** frame) override;
    int readAudioFrame(KvBasePlayerDecoderFrame** frame) override;
    void releaseVideoFrame(KvBasePlayerDecoderFrame* frame) override;
    void releaseAudioFrame(KvBasePlayerDecoderFrame* frame) override;
    bool isRunning() override;
    void flush() override;
    void setSoundWanted(bool isWanted) override { m_isSoundWanted = isWanted; }
    void setKeyPicturesOnly(bool isOnly) override { m_keyPicturesOnly = isOnly; }
    bool waitForVideoFrame(const KvThread& reader, int timeoutMs) override;
    bool waitForAudioFrame(const KvThread& reader, int timeoutMs) override;
    void wakeReaders() override;
    void requestStop() override;
    orvelle::StreamParameters videoParameters() override { return m_videoParameters.copy(); }
    orvelle::StreamParameters audioParameters() override { return m_audioParameters.copy(); }

private:
    /// Sound that may wait, in seconds; outlasts the bursts of a lossy path.
    static constexpr double kMaxSoundSec = 0.5;

    friend class KvPlayerDecoderVideoThread;
    friend class KvPlayerDecoderAudioThread;
    using FrameQueue = OwningQueue<KvBasePlayerDecoderFrame>;

    void decodeVideo(const KvThread& thread);
    void handleVideoPacket(const KvBasePlayerInputPacket& packet);
    bool isCodecFor(const KvBasePlayerInputPacket& packet);
    bool openVideo(const KvBasePlayerInputPacket& packet);
    int decodePicture(const KvBasePlayerInputPacket& packet);
    void begin(const KvBasePlayerInputPacket& packet, bool isFresh);
    void passPicture(double timeSec);

    void decodeAudio(const KvThread& thread);
    void handleAudioPacket(const KvBasePlayerInputPacket& packet);
    bool openAudio(const KvBasePlayerInputPacket& packet);
    void forgetSound();
    void passSound(double timeSec);
    void boundSound(double frameSec);
    bool waitForSoundSpace(const KvThread& thread);

    std::unique_ptr<FrameQueue> m_videoFrames;  ///< fixed between start() and stop(), as below
    std::unique_ptr<FrameQueue> m_audioFrames;
    std::unique_ptr<orvelle::OpenCodec> m_video;  ///< used by the video thread alone
    std::unique_ptr<orvelle::OpenCodec> m_audio;  ///< used by the audio thread alone
    std::unique_ptr<KvPlayerDecoderVideoThread> m_videoThread;
    std::unique_ptr<KvPlayerDecoderAudioThread> m_audioThread;

    orvelle::VideoFrameFilter m_filter;  ///< owned by the video thread, as the three below
    orvelle::DamageSpan m_damage;        ///< what is decoded here is not shown
    orvelle::ErrorRun m_videoErrors{"_decodeVideo"};
    std::vector<uint8_t> m_parameterSets;             ///< of the last key frame that had any
    orvelle::ErrorRun m_audioErrors{"_decodeAudio"};  ///< owned by the audio thread, as below
    int m_knownSoundId = -1;  ///< of what m_audioParameters tell, as the two below
    int m_knownSoundRate = 0;
    int m_knownSoundChannels = 0;
    double m_soundFrameSec = kMaxSoundSec;  ///< how long the last one lasts
    size_t m_lastG726Bytes = 0;
    double m_lastG726Sec = 0.0;

    /// Pictures may be shown: set by the video thread alone, cleared by flush() too.
    std::atomic<bool> m_keyFrameSeen{false};
    std::atomic<bool> m_isSoundWanted{true};  ///< orders nothing, as the one below
    std::atomic<bool> m_keyPicturesOnly{false};

    orvelle::PublishedParameters m_videoParameters;
    orvelle::PublishedParameters m_audioParameters;
};
