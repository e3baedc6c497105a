#pragma once

#include <string>

/// Decodes the device code that a person types into the camera's UID and password.
///
/// `code` is NUL-terminated UTF-8; case, blanks and hyphens do not matter. `uid` and `password`
/// are zeroed buffers of 1024 bytes and receive NUL-terminated text. Returns 0, else -1 and the
/// buffers stay as they were: any one wrong character and any swap of neighbours is noticed.
int GetDeUIDPasswd(const char* code, char* uid, char* password);

namespace orvelle {

constexpr int kMaxPasswordBytes = 32;  ///< UTF-8, what a device code can carry

/// The device code of a camera in groups of five characters parted by hyphens; empty when the
/// UID is not 1 to 20 ASCII letters and digits or the password not 1 to 32 bytes without NUL.
std::string encodeDeviceCode(const std::string& uid, const std::string& password);

}  // namespace orvelle
