#pragma once

#include <memory>
#include <vector>

class KvDevice;

namespace orvelle {

/// Closes the sessions of all devices side by side, as each waits for its own loops, and returns
/// when the last is closed.
void closeDevices(const std::vector<std::unique_ptr<KvDevice>>& devices);

}  // namespace orvelle
