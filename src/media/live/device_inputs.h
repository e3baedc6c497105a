#pragma once

namespace orvelle {

/// Makes KvTUTKPreviewInput the live input of every device. Called once at start-up, before
/// the first device is asked for its input.
void registerDeviceInputs();

}  // namespace orvelle
