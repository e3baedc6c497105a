#include "platform/suspend_delay.h"

namespace orvelle {

SuspendDelay::SuspendDelay() = default;

SuspendDelay::~SuspendDelay() = default;

}  // namespace orvelle
