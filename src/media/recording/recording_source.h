#pragma once

#include <mutex>

#include "media/stages/base_player_input.h"
#include "media/stages/stream_parameters.h"

class KvBasePlayerDecoder;

namespace orvelle {

/// What a recording needs of a player's stages, which may be taken away from under it: what the
/// decoder knew then stays known. Any thread.
class RecordingSource {
public:
    /// Both borrowed until release().
    RecordingSource(KvBasePlayerInput* input, KvBasePlayerDecoder* decoder)
        : m_input(input), m_decoder(decoder) {}

    bool isComplete() const;
    /// As KvBasePlayerInput::setPacketCallback(); does nothing after release().
    double attach(void* user, KvBasePlayerInput::PacketCallback tap);
    void detach();
    /// Detaches, and uses neither stage once it returns.
    void release();

    /// Empty while nothing is known.
    StreamParameters videoParameters() const;
    StreamParameters audioParameters() const;

private:
    mutable std::mutex m_mutex;  ///< guards everything below; comes before the input's packet lock
    KvBasePlayerInput* m_input;
    KvBasePlayerDecoder* m_decoder;
    StreamParameters m_lastVideo;  ///< as they were at release()
    StreamParameters m_lastAudio;
};

}  // namespace orvelle
