#include "device/device_input_factory.h"

#include <atomic>

namespace orvelle {
namespace {

std::atomic<DeviceInputFactory> s_factory{nullptr};

}  // namespace

void setDeviceInputFactory(DeviceInputFactory factory) {
    s_factory = factory;
}

DeviceInputFactory deviceInputFactory() {
    return s_factory;
}

}  // namespace orvelle
