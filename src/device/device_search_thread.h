#pragma once

#include <memory>
#include <vector>

#include "core/thread.h"
#include "device/tutk_device.h"

/// Asks the local network for cameras, once; stop() cuts it short. The results may be read when
/// it has ended.
class TUTKDeviceSearchThread : public KvThread {
public:
    explicit TUTKDeviceSearchThread(int timeoutMs);
    void run() override;

    const std::vector<std::unique_ptr<KvTUTKDevice>>& result() const { return m_result; }

private:
    const int m_timeoutMs;
    std::vector<std::unique_ptr<KvTUTKDevice>> m_result;
};
