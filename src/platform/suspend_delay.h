#pragma once

#include <memory>

namespace orvelle {

/// While one lives, a suspend of the system waits for a moment, so that files can be closed first.
/// The desktop's login service bounds it, usually to five seconds; on Windows every program has its
/// two seconds in any case. Made on the interface thread, whose event loop it needs; any thread may
/// destroy it.
class SuspendDelay {
public:
    SuspendDelay();
    ~SuspendDelay();
    SuspendDelay(const SuspendDelay&) = delete;
    SuspendDelay& operator=(const SuspendDelay&) = delete;

private:
    std::shared_ptr<void> m_lock;
};

}  // namespace orvelle
