#include "media/live/device_inputs.h"

#include "device/device_input_factory.h"
#include "media/live/tutk_preview_input.h"

namespace orvelle {

void registerDeviceInputs() {
    setDeviceInputFactory([](KvTUTKDevice& device) -> KvBasePlayerInput* {
        auto* input = new KvTUTKPreviewInput;
        input->setDevice(&device);
        return input;
    });
}

}  // namespace orvelle
