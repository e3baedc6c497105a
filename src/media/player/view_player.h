#pragma once

#include "media/player/base_player.h"

class KvPlayerOutputDefault;

namespace orvelle {

class VideoSurface;

/// What players that show their pictures in a view and play their sound have in common; concrete
/// ones bring the input. Used by one thread, the interface's.
///
/// Its threads call virtual functions of the player, so the destructor of a concrete player begins
/// with shutdown().
class ViewPlayer : public KvBasePlayer {
public:
    using KvBasePlayer::KvBasePlayer;

    /// Opens and starts; -1 (and no event) when there is nothing to play from.
    int play();
    /// Stops and closes; play() may follow.
    void shutdown();

    /// Borrowed; outlives the running player. Null: pictures are dropped.
    void setView(VideoSurface* view);
    /// 0.0 is silence, 1.0 is full.
    void setVolume(double volume);
    double volume() const { return m_volume; }

    std::unique_ptr<KvBasePlayerDecoder> createDecoder() override;
    std::unique_ptr<KvBasePlayerOutput> createOutput() override;
    void releaseOutput() override;

protected:
    bool isSoundHeard() const override { return m_volume > 0.0; }

private:
    VideoSurface* m_view = nullptr;
    double m_volume = 1.0;
    KvPlayerOutputDefault* m_viewOutput = nullptr;  ///< the base's output stage, or null
};

}  // namespace orvelle
