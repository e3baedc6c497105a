#pragma once

#include "link/crypto/cpace.h"

#include <optional>

/// Version 1 of the link knew no login of its own: its clients shake hands with the transport at
/// once, and its cameras answer such a handshake. These few packets let each side say why it
/// cannot serve the other.
namespace orvelle {

/// The answer that tells a client of version 1 that the camera speaks another version; nothing
/// when the packet is no such handshake. No longer than the packet.
std::optional<Bytes> refusalOfVersionOne(const uint8_t* data, size_t size);

/// Asks whether a camera of version 1 is there.
Bytes versionOneProbe();
bool isVersionOneAnswer(const uint8_t* data, size_t size);

}  // namespace orvelle
