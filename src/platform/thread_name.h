#pragma once

#include <string>

namespace orvelle {

/// Makes `name` (UTF-8) the name of the calling thread, for debuggers, where Qt does not.
void nameThisThread(const std::string& name);

}  // namespace orvelle
