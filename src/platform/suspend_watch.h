#pragma once

#include <functional>
#include <memory>

namespace orvelle {

/// Calls back on the interface thread, from its event loop, when the system is about to suspend.
/// On Windows that news comes by native messages instead (native_message.h) and this one is silent.
class SuspendWatch {
public:
    explicit SuspendWatch(std::function<void()> aboutToSuspend);
    ~SuspendWatch();
    SuspendWatch(const SuspendWatch&) = delete;
    SuspendWatch& operator=(const SuspendWatch&) = delete;

private:
    struct Receiver;

    std::unique_ptr<Receiver> m_receiver;
};

}  // namespace orvelle
