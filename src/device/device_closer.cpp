#include "device/device_closer.h"

#include "core/thread.h"
#include "device/device.h"

namespace orvelle {
namespace {

class DeviceCloser : public KvThread {
public:
    explicit DeviceCloser(KvDevice& device)
        : KvThread(QStringLiteral("device-close")), m_device(device) {}
    void run() override { m_device.uninit(); }

private:
    KvDevice& m_device;
};

}  // namespace

void closeDevices(const std::vector<std::unique_ptr<KvDevice>>& devices) {
    for (const auto& device : devices)
        device->requestStop();
    std::vector<std::unique_ptr<DeviceCloser>> closers;
    for (const auto& device : devices) {
        if (!device->isConnected())
            continue;
        closers.push_back(std::make_unique<DeviceCloser>(*device));
        closers.back()->start();
    }
    for (const auto& closer : closers)
        closer->waitForEnd();
}

}  // namespace orvelle
