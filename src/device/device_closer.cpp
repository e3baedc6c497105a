#include "device/device_closer.h"

#include <memory>
#include <vector>

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

void closeDevices(const QList<KvDevice*>& devices) {
    for (KvDevice* device : devices)
        device->requestStop();
    std::vector<std::unique_ptr<DeviceCloser>> closers;
    for (KvDevice* device : devices) {
        if (!device->isConnected())
            continue;
        closers.push_back(std::make_unique<DeviceCloser>(*device));
        closers.back()->start();
    }
    for (const auto& closer : closers)
        closer->waitForEnd();
}

}  // namespace orvelle
