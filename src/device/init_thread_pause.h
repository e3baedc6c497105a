#pragma once

class KvDeviceManager;

namespace orvelle {

/// Keeps the manager's thread, and so the device lock, out of the way for as long as it lives;
/// pauses overlap. The constructor blocks until a running attempt is aborted: for workers. The
/// destructor is short, on any thread.
class InitThreadPause {
public:
    explicit InitThreadPause(KvDeviceManager& manager);
    ~InitThreadPause();
    InitThreadPause(const InitThreadPause&) = delete;
    InitThreadPause& operator=(const InitThreadPause&) = delete;

private:
    KvDeviceManager& m_manager;
};

}  // namespace orvelle
