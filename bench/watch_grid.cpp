#include "watch_grid.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <algorithm>
#include <cmath>

#include "media/live/device_player.h"
#include "paint_watch.h"
#include "render/video_surface.h"

namespace orvelle::bench {

WatchGrid::WatchGrid(const std::vector<KvDevice*>& devices, Drawing drawing) {
    resize(1120, 750);
    for (KvDevice* device : devices) {
        auto player = std::make_unique<KvDevicePlayer>();
        player->setDevice(device);
        player->setVolume(0.0);
        if (drawing == Drawing::kOn) {
            m_views.push_back(makeVideoSurface(this));
            player->setView(m_views.back());
        }
        m_players.push_back(std::move(player));
    }
    if (m_views.empty())
        return;
    m_firstWatch = std::make_unique<PaintWatch>(*m_views.front());
    connect(m_firstWatch.get(), &PaintWatch::onScreen, this, [this] {
        if (m_firstPictureMs < 0.0 && m_sincePlay.isValid() && stats(0).picturesShown > 0)
            m_firstPictureMs = static_cast<double>(m_sincePlay.nsecsElapsed()) * 1e-6;
    });
    show();
}

WatchGrid::~WatchGrid() {
    for (const auto& player : m_players)
        player->requestStop();
    for (const auto& player : m_players)
        player->shutdown();
}

bool WatchGrid::play(int timeoutMs) {
    m_sincePlay.start();
    for (const auto& player : m_players)
        if (player->play() < 0)
            return false;
    const QDeadlineTimer deadline(timeoutMs);
    while (!allPlay() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    return allPlay();
}

bool WatchGrid::allPlay() const {
    if (!m_views.empty() && m_firstPictureMs < 0.0)
        return false;
    return std::all_of(m_players.begin(), m_players.end(),
                       [](const auto& player) { return player->stats().picturesDecoded > 0; });
}

VideoSurface& WatchGrid::view(int index) const {
    return *m_views.at(static_cast<size_t>(index));
}

StreamStatsSnapshot WatchGrid::stats(int index) const {
    return m_players.at(static_cast<size_t>(index))->stats();
}

uint64_t WatchGrid::picturesDecoded() const {
    uint64_t sum = 0;
    for (const auto& player : m_players)
        sum += player->stats().picturesDecoded;
    return sum;
}

uint64_t WatchGrid::picturesLost() const {
    uint64_t sum = 0;
    for (const auto& player : m_players) {
        const StreamStatsSnapshot stats = player->stats();
        sum += stats.videoFramesLost + stats.videoFramesDropped + stats.decodeErrors;
    }
    return sum;
}

void WatchGrid::resizeEvent(QResizeEvent*) {
    const int side = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(m_views.size()))));
    for (size_t i = 0; i < m_views.size(); ++i) {
        const int column = static_cast<int>(i) % side;
        const int row = static_cast<int>(i) / side;
        m_views[i]->widget().setGeometry(column * width() / side, row * height() / side,
                                         width() / side, height() / side);
    }
}

}  // namespace orvelle::bench
