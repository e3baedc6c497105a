#pragma once

#include <mutex>

#include "camera/card/card_messages.h"
#include "camera/card/recording_reader.h"
#include "core/thread.h"
#include "link/server/link_server.h"

namespace orvelle {

/// Who gets a playback, and on which AV channel.
struct PlaybackTarget {
    LinkServer* server = nullptr;  ///< borrowed
    int clientId = 0;
    int channel = 0;
};

/// Sends one recording to one client, on a thread of its own: answers the request once the
/// recording is open, waits for the client's login on the channel, sends at the pace of the
/// recording, and tells the end when the client has had time to show the last picture.
/// Once stop() has returned nothing more is sent.
class Playback : public KvThread {
public:
    Playback(const PlaybackTarget& target, Recording recording, int64_t fromSec);

    int channel() const { return m_target.channel; }

    void run() override;
    void stop() override;

private:
    bool waitForLogin();
    bool sendAll();
    bool waitUntil(int64_t clockUs);
    bool send(const EncodedFrame& frame);
    void say(PlayCommand command, int32_t result);

    const PlaybackTarget m_target;
    const Recording m_recording;
    const int64_t m_fromSec;
    RecordingReader m_reader;  ///< own thread

    std::mutex m_mutex;  ///< held while anything is sent, and to stop
};

}  // namespace orvelle
