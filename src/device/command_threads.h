#pragma once

#include "core/thread.h"
#include "device/command_channel.h"

/// Drains a device's command queue into its AV channel; outlived by the channel that owns it.
class KvTUTKDeviceSendThread : public KvThread {
public:
    explicit KvTUTKDeviceSendThread(orvelle::CommandChannel& channel);
    void run() override;

private:
    orvelle::CommandChannel& m_channel;
};

/// Reads a device's AV channel and calls its listeners; outlived by the channel that owns it.
class KvTUTKDeviceRecvThread : public KvThread {
public:
    explicit KvTUTKDeviceRecvThread(orvelle::CommandChannel& channel);
    void run() override;

private:
    orvelle::CommandChannel& m_channel;
};
