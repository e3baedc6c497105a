#pragma once

#include "media/player/view_player.h"

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

    /// Spares decoding while nobody watches: true decodes key pictures only, until false and the
    /// next one of them. A recording is not touched.
    void setKeyPicturesOnly(bool isOnly);

    std::unique_ptr<KvBasePlayerInput> createInput() override;
    std::unique_ptr<KvBasePlayerDecoder> createDecoder() override;

private:
    bool m_keyPicturesOnly = false;
    KvDevice* m_device = nullptr;
};
