#pragma once

#include <QElapsedTimer>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <vector>

#include "media/stages/stream_stats.h"

class KvDevice;
class KvDevicePlayer;

namespace orvelle {
class VideoSurface;
}

namespace orvelle::bench {

class PaintWatch;

/// A window of live pictures, as many as devices were given, in a square grid; without drawing
/// the players decode and drop. Interface thread.
class WatchGrid : public QWidget {
    Q_OBJECT
public:
    enum class Drawing { kOn, kOff };

    WatchGrid(const std::vector<KvDevice*>& devices, Drawing drawing);
    ~WatchGrid() override;  ///< ends all players side by side

    /// Plays everything; false when not every player showed a picture within `timeoutMs`.
    /// Without drawing: decoded one.
    bool play(int timeoutMs);
    /// Milliseconds from play() to the first painted picture; -1 before.
    double firstPictureMs() const { return m_firstPictureMs; }
    VideoSurface& view(int index) const;
    StreamStatsSnapshot stats(int index) const;
    /// Sums over all players.
    uint64_t picturesDecoded() const;
    uint64_t picturesLost() const;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    bool allPlay() const;

    std::vector<VideoSurface*> m_views;  ///< children
    std::unique_ptr<PaintWatch> m_firstWatch;
    std::vector<std::unique_ptr<KvDevicePlayer>> m_players;
    QElapsedTimer m_sincePlay;
    double m_firstPictureMs = -1.0;
};

}  // namespace orvelle::bench
