#pragma once

#include "device/device_manager.h"

namespace orvelle {

/// The device lock, held for a moment.
class DeviceLock {
public:
    explicit DeviceLock(KvDeviceManager& manager) : m_manager(manager) { manager.lockDevices(); }
    ~DeviceLock() { m_manager.unlockDevices(); }
    DeviceLock(const DeviceLock&) = delete;
    DeviceLock& operator=(const DeviceLock&) = delete;

private:
    KvDeviceManager& m_manager;
};

}  // namespace orvelle
