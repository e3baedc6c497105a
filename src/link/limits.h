#pragma once

namespace orvelle {

/// What both ends of the link agree on; docs/protocol.md shows where each applies.

constexpr char kLinkAccount[] = "admin";  ///< the only one that a camera has

constexpr int kMaxControlBytes = 1388;       ///< payload of one control message
constexpr int kMaxVideoFrameBytes = 262144;  ///< one compressed picture
constexpr int kMaxAudioFrameBytes = 1024;    ///< one compressed block of sound
constexpr int kFrameInfoBytes = 16;
constexpr int kMaxUidLength = 20;
constexpr int kMaxDeviceNameBytes = 63;
constexpr int kMaxLinkSessions = 64;  ///< session ids of a client at once
/// AV channels of a client at once; also the bound of a session's channel numbers.
constexpr int kMaxLinkChannels = 32;
constexpr int kMaxLinkClients = 16;  ///< clients of one camera at once

}  // namespace orvelle
