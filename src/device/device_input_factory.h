#pragma once

class KvBasePlayerInput;
class KvTUTKDevice;

namespace orvelle {

/// Makes a live input for `device`, which outlives it; the caller owns the input.
using DeviceInputFactory = KvBasePlayerInput* (*)(KvTUTKDevice& device);

/// The media pipeline registers itself here, so that this room need not know it. Any thread;
/// null takes it back.
void setDeviceInputFactory(DeviceInputFactory factory);
DeviceInputFactory deviceInputFactory();

}  // namespace orvelle
