#pragma once

#include <string>

namespace orvelle {

/// Starts a downloaded installer on its own, so that it outlives the program: an executable is run,
/// anything else goes to the program that the desktop has for it. `path` is UTF-8. False when
/// there is no such file or it could not be started.
bool runFile(const std::string& path);

}  // namespace orvelle
