#pragma once

#include <memory>
#include <vector>

class KvDevice;

namespace orvelle {

/// Closes the sessions of all devices at once and returns when the last is closed. Each
/// session's goodbye may take some 200 ms, so they do not wait for each other.
void closeDevices(const std::vector<std::unique_ptr<KvDevice>>& devices);

}  // namespace orvelle
