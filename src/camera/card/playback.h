#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>

#include "camera/card/card_messages.h"
#include "camera/card/card_store.h"
#include "camera/card/recording_reader.h"
#include "core/thread.h"
#include "link/server/link_server.h"

namespace orvelle {

/// Who gets a playback, and on which AV channel.
struct PlaybackTarget {
    LinkServer* server = nullptr;  ///< borrowed
    int clientId = 0;
    int channel = 0;
    uint32_t replyType = 0;  ///< of the control messages about it
};

/// Sends what was recorded from one moment on to one client, on a thread of its own: answers the
/// request once the recording is open, waits for the client's login on the channel, sends, and
/// tells the end.
///
/// A client that says how much room it has gets frames as fast as the path takes them, and the
/// recordings that follow without a break, up to what is being recorded now. Any other gets one
/// recording at its own pace, half a second ahead, and the end when it has had time to show the
/// last picture. Nothing is left out for either.
///
/// Once stop() has returned nothing more is sent.
class Playback : public KvThread {
public:
    /// `store` is borrowed.
    Playback(const PlaybackTarget& target, const CardStore& store, Recording recording,
             int64_t fromSec);

    int channel() const { return m_target.channel; }

    /// The client has room for more. Any thread.
    void grant(const RoomGrant& room);

    void run() override;
    void stop() override;

private:
    QString openFirst();
    bool waitForLogin();
    bool sendAll();
    bool sendRecording();
    bool waitForTurn(const EncodedFrame& frame);
    bool send(const EncodedFrame& frame);
    bool openFollowing();
    bool waitUntilTaken();
    bool isGranted();
    /// False when it was stopped.
    bool pause(int ms);
    void say(PlayCommand command, int32_t result);

    const PlaybackTarget m_target;
    const CardStore& m_store;
    const int64_t m_fromSec;

    // Own thread.
    Recording m_recording;  ///< the one being sent
    RecordingReader m_reader;
    const int64_t m_startSec;           ///< of the first one, from which times count
    std::optional<int64_t> m_offsetUs;  ///< from a frame's time to when it is due
    int64_t m_lastDueUs = 0;
    uint32_t m_sentFrames = 0;
    uint64_t m_sentBytes = 0;
    bool m_isAtPresent = false;  ///< has come to the end of what was recorded

    std::mutex m_mutex;  ///< guards what follows; held while anything is sent, and to stop
    std::condition_variable m_changed;
    std::optional<RoomGrant> m_room;  ///< the last one
};

}  // namespace orvelle
