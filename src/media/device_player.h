#pragma once

#include "media/base_player.h"

class KvDevice;
class KvPlayerOutputDefault;
class KvVideoView;

/// Live view of one camera. Used by one thread, the interface's; the device and the view are
/// borrowed and outlive a running player.
class KvDevicePlayer : public KvBasePlayer {
    Q_OBJECT
public:
    explicit KvDevicePlayer(QObject* parent = nullptr);
    ~KvDevicePlayer() override;  ///< stops and closes

    /// Opens and starts; -1 (and no event) when there is nothing to play from.
    int play();
    /// Stops and closes; play() may follow.
    void shutdown();

    /// Takes effect with the next play().
    void setDevice(KvDevice* device) { m_device = device; }
    KvDevice* device() const { return m_device; }
    /// Null: pictures are dropped.
    void setView(KvVideoView* view);
    /// 0.0 is silence, 1.0 is full.
    void setVolume(double volume);
    double volume() const { return m_volume; }

    std::unique_ptr<KvBasePlayerInput> createInput() override;
    std::unique_ptr<KvBasePlayerDecoder> createDecoder() override;
    std::unique_ptr<KvBasePlayerOutput> createOutput() override;
    void releaseOutput() override;

private:
    KvDevice* m_device = nullptr;
    KvVideoView* m_view = nullptr;
    double m_volume = 1.0;
    KvPlayerOutputDefault* m_deviceOutput = nullptr;  ///< the base's output stage, or null
};
