#pragma once

#include "core/thread.h"
#include "device/tutk_device.h"

/// Drains a device's command queue into its channel; outlived by the device that owns it.
class KvTUTKDeviceSendThread : public KvThread {
public:
    explicit KvTUTKDeviceSendThread(KvTUTKDevice& device);
    void run() override;

private:
    KvTUTKDevice& m_device;
};

/// Reads a device's channel and calls its listeners; outlived by the device that owns it.
class KvTUTKDeviceRecvThread : public KvThread {
public:
    explicit KvTUTKDeviceRecvThread(KvTUTKDevice& device);
    void run() override;

private:
    KvTUTKDevice& m_device;
};
