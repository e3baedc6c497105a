#pragma once

#include "media/live/tutk_input.h"

/// The live input that a device makes for a KvDevicePlayer.
class KvTUTKPreviewInput : public KvTUTKInput {
    Q_OBJECT
public:
    using KvTUTKInput::KvTUTKInput;
    /// Closes here, since the receive threads call virtual operations of the whole object.
    ~KvTUTKPreviewInput() override { KvTUTKInput::close(); }
};
