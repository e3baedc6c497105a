#pragma once

#include "support/test_camera.h"

namespace orvelle::test {

/// A test camera of its own name, and a device that knows it and its address.
class DeviceCamera : public TestCamera {
public:
    DeviceCamera() : TestCamera(QStringLiteral("MEDIATEST%1").arg(++s_count)) {
        device.setUid(QStringLiteral("MEDIATEST%1").arg(s_count));
        device.setPassword(QLatin1String(kPassword));
    }
    ~DeviceCamera() override {
        device.uninit();
        stop();
    }

    bool start() {
        const bool isUp = TestCamera::start();
        qputenv("ORVELLE_CAMERA_ADDRESSES",
                device.uid().toLatin1() + "=127.0.0.1:" + QByteArray::number(port()));
        return isUp;
    }

    KvTUTKDevice device;

private:
    static inline int s_count = 0;
};

}  // namespace orvelle::test
