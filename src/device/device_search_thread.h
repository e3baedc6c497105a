#pragma once

#include <vector>

#include "core/thread.h"
#include "device/camera_record.h"

/// Asks the local network for cameras, once; stop() cuts it short. The results may be read when
/// it has ended.
class TUTKDeviceSearchThread : public KvThread {
public:
    explicit TUTKDeviceSearchThread(int timeoutMs);
    void run() override;

    const std::vector<orvelle::CameraRecord>& result() const { return m_result; }

private:
    const int m_timeoutMs;
    std::vector<orvelle::CameraRecord> m_result;
};
