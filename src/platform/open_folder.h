#pragma once

#include <string>

namespace orvelle {

/// Shows a directory in the system's file browser and does not wait for it. `path` is UTF-8; any
/// character may stand in it. False when it is no directory or no browser could be started.
bool openFolder(const std::string& path);

}  // namespace orvelle
