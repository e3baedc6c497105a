#pragma once

#include <QObject>

#include <cstdint>
#include <mutex>

#include "media/stages/packet_group.h"
#include "media/stages/stream_stats.h"

class KvBasePlayerInputPacket;
class KvThread;
struct AVCodec;
struct AVCodecContext;

/// First stage of a player: receives compressed packets and queues them for the decoder.
///
/// open() starts the stage's own threads, close() ends them. read...() and wait...() are called
/// by the decoder's threads, which end before close(); everything else by the player's owner.
/// Results are 0 or negative.
class KvBasePlayerInput : public QObject, public orvelle::StatsHolder {
    Q_OBJECT
public:
    /// What happened to the input, told on one of its threads.
    enum Event : int32_t {
        kUnusable = 1,  ///< the device cannot be used
        kLost = 3,      ///< the connection ended
        kFlushed = 4,   ///< 4 and 5: what was queued behind the input is worthless now
        kRepositioned = 5,
    };
    enum MediaKind { kVideoKind = 0, kAudioKind = 1 };
    using EventCallback = void (*)(void* user, int32_t event);
    /// Runs on a receive thread under the input's mutex; must neither keep nor delete the packet.
    using PacketCallback = void (*)(void* user, KvBasePlayerInputPacket* packet);

    explicit KvBasePlayerInput(QObject* parent = nullptr);

    virtual int open() = 0;
    virtual void close() = 0;
    virtual void resume() = 0;
    virtual void pause() = 0;
    virtual void seek(double seconds) = 0;
    /// Seconds; negative for a live source.
    virtual double duration() = 0;
    /// Whether packets come as they are made; a recording comes faster than it plays.
    virtual bool isLive() { return duration() < 0.0; }
    /// 0 and a packet that the caller owns, or -1 when none waits.
    virtual int readVideoPacket(KvBasePlayerInputPacket** packet) = 0;
    virtual int readAudioPacket(KvBasePlayerInputPacket** packet) = 0;
    virtual void releaseVideoPacket(KvBasePlayerInputPacket* packet) = 0;
    virtual void releaseAudioPacket(KvBasePlayerInputPacket* packet) = 0;
    /// For inputs that bring their own codec context; -1 tells the decoder to make one.
    virtual int openCodec(int mediaKind, int codecId, AVCodecContext** context,
                          const AVCodec** codec) = 0;
    virtual int closeCodec(int mediaKind, AVCodecContext** context, const AVCodec** codec) = 0;
    /// Received bytes a second. Any thread.
    virtual int speed() = 0;
    /// True while a receive thread has not stopped. Any thread between open() and close().
    virtual bool isRunning() = 0;
    virtual void flush() = 0;
    /// False spares receiving sound that nobody hears, once it is known what it is like; true
    /// again brings it back within a moment. Any thread.
    virtual void setSoundWanted(bool) {}
    /// What the sound is like has to be learned once more, wanted or not.
    virtual void learnSound() {}
    /// Of a recording: the output has nothing to show any more. No picture is given until there
    /// are enough for a while, or all that will come. Any thread.
    virtual void holdBack() {}

    /// Waits until a packet waits, the input has ended, `timeoutMs` passed or `reader` is asked to
    /// stop (whoever asks it calls wakeReaders() next). True when a packet waits.
    virtual bool waitForVideoPacket(const KvThread& reader, int timeoutMs) = 0;
    virtual bool waitForAudioPacket(const KvThread& reader, int timeoutMs) = 0;
    virtual void wakeReaders() = 0;
    /// Asks the stage's threads to end without waiting for them; close() still has to follow.
    virtual void requestStop() = 0;

    /// Before open().
    void setCallback(void* user, EventCallback callback);
    void notify(int32_t event);

    /// Attaches or (null) detaches the one packet tap; once it returns, the former is not running.
    /// A tap of a live input is first given the group of pictures that runs, so that it begins
    /// with a key picture: how many seconds ago that came, 0 without one.
    double setPacketCallback(void* user, PacketCallback callback);
    void deliverPacket(KvBasePlayerInputPacket* packet);
    /// How long ago the key picture came that a tap would begin with now, in seconds; 0 without
    /// one. Any thread.
    double keptSec() const;

private:
    void* m_user = nullptr;  ///< fixed while threads run
    EventCallback m_callback = nullptr;

    double groupAgeSec() const;

    mutable std::mutex m_packetMutex;  ///< guards everything below; held while the tap runs
    void* m_packetUser = nullptr;
    PacketCallback m_packetCallback = nullptr;
    orvelle::PacketGroup m_group;  ///< of a live input
    int64_t m_groupArrivalUs = 0;  ///< of its key picture
};
