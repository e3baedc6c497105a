#include "platform/suspend_delay.h"

#include "platform/freedesktop.h"

namespace orvelle {

SuspendDelay::SuspendDelay()
    : m_lock(loginLock(QStringLiteral("sleep"), QStringLiteral("delay"),
                       QStringLiteral("Closing recordings"))) {}

SuspendDelay::~SuspendDelay() = default;

}  // namespace orvelle
