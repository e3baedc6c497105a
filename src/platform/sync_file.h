#pragma once

#include <string>

namespace orvelle {

/// Waits until everything written to the file is on its disk. `path` is UTF-8; whoever writes the
/// file may have it open. False when the system could not promise it.
bool syncFile(const std::string& path);

}  // namespace orvelle
