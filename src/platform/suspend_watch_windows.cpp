#include "platform/suspend_watch.h"

namespace orvelle {

struct SuspendWatch::Receiver {};

SuspendWatch::SuspendWatch(std::function<void()>) {}

SuspendWatch::~SuspendWatch() = default;

}  // namespace orvelle
