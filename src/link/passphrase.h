#pragma once

#include <optional>
#include <string>

namespace orvelle {

/// The passphrase that encrypts a session: 64 hexadecimal digits derived from the password of
/// `account` on camera `uid`, so that the password itself never reaches the transport. The
/// first call for a triple takes tens of milliseconds, later ones come from a bounded cache.
/// Any thread, but never a transport callback. Empty when the library refuses.
std::optional<std::string> derivePassphrase(const std::string& uid, const std::string& account,
                                            const std::string& password);

}  // namespace orvelle
