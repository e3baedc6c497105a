#pragma once

#include <mutex>

#include "media/stages/base_player_input.h"
#include "media/stages/stream_parameters.h"

class KvBasePlayerDecoder;

namespace orvelle {

/// What a recording needs of a player's stages, which may be paused or taken away from under it:
/// what the decoder last knew stays known. Any thread.
class RecordingSource {
public:
    /// Both borrowed until release().
    RecordingSource(KvBasePlayerInput* input, KvBasePlayerDecoder* decoder);

    /// Keeps what is known now, for a decoder that is paused soon; false when a stage is missing.
    bool prepare();
    /// As KvBasePlayerInput::setPacketCallback(); does nothing after release().
    double attach(void* user, KvBasePlayerInput::PacketCallback tap);
    void detach();
    /// Detaches, and uses neither stage once it returns.
    void release();

    /// Empty until something is known.
    StreamParameters videoParameters();
    StreamParameters audioParameters();

private:
    void learn();

    std::mutex m_mutex;  ///< guards everything below; comes before the input's packet lock
    KvBasePlayerInput* m_input;
    KvBasePlayerDecoder* m_decoder;
    StreamParameters m_lastVideo;  ///< the last that were not empty
    StreamParameters m_lastAudio;
};

}  // namespace orvelle
