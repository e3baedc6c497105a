#pragma once

namespace orvelle {

/// Bounds that both ends of the link keep to; docs/protocol.md says where each comes from.

constexpr int kMaxControlBytes = 1388;       ///< payload of one control message
constexpr int kMaxVideoFrameBytes = 262144;  ///< one compressed picture
constexpr int kMaxAudioFrameBytes = 1024;    ///< one compressed block of sound
constexpr int kFrameInfoBytes = 16;
constexpr int kMaxUidLength = 20;
constexpr int kMaxDeviceNameBytes = 63;
constexpr int kMaxLinkSessions = 64;  ///< session ids of a client at once
constexpr int kMaxLinkChannels =
    32;  ///< AV channels of a client at once, channel numbers of a session
constexpr int kMaxLinkClients = 16;  ///< clients of one camera at once

}  // namespace orvelle
