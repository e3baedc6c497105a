#pragma once

#include "media/stages/stream_parameters.h"

class KvBasePlayerInputPacket;

namespace orvelle {

/// What a file has to know of a stream, told by one of its packets without decoding it. Empty when
/// the packet does not tell.

/// `key` is a key picture with its parameter sets.
StreamParameters describePictures(const KvBasePlayerInputPacket& key);
/// A-law, or AAC with ADTS headers.
StreamParameters describeSound(const KvBasePlayerInputPacket& sound);

}  // namespace orvelle
