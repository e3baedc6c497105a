#pragma once

#include "media/view_player.h"

class KvDevice;

/// Live view of one camera. Used by one thread, the interface's; the device and the view are
/// borrowed and outlive a running player.
class KvDevicePlayer : public orvelle::ViewPlayer {
    Q_OBJECT
public:
    explicit KvDevicePlayer(QObject* parent = nullptr);
    ~KvDevicePlayer() override;  ///< shuts down

    /// Takes effect with the next play().
    void setDevice(KvDevice* device) { m_device = device; }
    KvDevice* device() const { return m_device; }

    std::unique_ptr<KvBasePlayerInput> createInput() override;

private:
    KvDevice* m_device = nullptr;
};
