#include "latency_probe.h"

#include <QPixmap>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>

#include "frames/picture_clock.h"
#include "median.h"
#include "render/video_surface.h"

namespace orvelle::bench {

namespace {

/// Of the clock that the camera stamps with.
int64_t wallClockUs() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

constexpr double kWindowSeconds = 10.0;

}  // namespace

LatencyProbe::LatencyProbe(VideoSurface& view) : m_view(view), m_watch(view) {
    connect(&m_watch, &PaintWatch::onScreen, this, &LatencyProbe::readPicture);
}

void LatencyProbe::readPicture() {
    const int64_t shownUs = wallClockUs();
    const QWidget& widget = m_view.widget();
    double scaleX = 1.0;
    double scaleY = 1.0;
    m_view.pictureScale(&scaleX, &scaleY);
    const QSize size(static_cast<int>(widget.width() * scaleX),
                     static_cast<int>(widget.height() * scaleY));
    const QPoint corner((widget.width() - size.width()) / 2, (widget.height() - size.height()) / 2);
    const QWidget* window = widget.window();
    const QPoint place = widget.mapTo(window, corner);
    const QImage screen =
        window->windowHandle()
            ->screen()
            ->grabWindow(window->winId(), place.x(), place.y(), size.width(), size.height())
            .toImage()
            .convertToFormat(QImage::Format_RGB32);

    const PixelView picture{screen.constBits(), screen.width(), screen.height(),
                            screen.bytesPerLine(), 4};
    const auto stamp = readPictureClock(picture);
    if (!stamp || *stamp == m_lastStamp)
        return;
    m_lastStamp = *stamp;
    if (m_samples.empty())
        m_firstUs = shownUs;
    const uint64_t age = (static_cast<uint64_t>(shownUs) - *stamp) & kPictureClockMask;
    m_samples.push_back(
        {static_cast<double>(shownUs - m_firstUs) * 1e-6, static_cast<double>(age) * 1e-3});
}

double LatencyProbe::percentileMs(double percent) const {
    if (m_samples.empty())
        return std::nan("");
    std::vector<double> sorted;
    for (const Sample& sample : m_samples)
        sorted.push_back(sample.latencyMs);
    std::sort(sorted.begin(), sorted.end());
    const double position = percent / 100.0 * static_cast<double>(sorted.size() - 1);
    return sorted[static_cast<size_t>(std::lround(position))];
}

double LatencyProbe::slopeMsPerMinute() const {
    const std::vector<Sample> medians = windowMedians();
    std::vector<double> slopes;
    for (size_t i = 0; i < medians.size(); ++i)
        for (size_t j = i + 1; j < medians.size(); ++j)
            slopes.push_back(60.0 * (medians[j].latencyMs - medians[i].latencyMs) /
                             (medians[j].atSeconds - medians[i].atSeconds));
    return slopes.empty() ? std::nan("") : median(std::move(slopes));
}

std::vector<LatencyProbe::Sample> LatencyProbe::windowMedians() const {
    std::map<int, std::vector<double>> windows;
    for (const Sample& sample : m_samples)
        windows[static_cast<int>(sample.atSeconds / kWindowSeconds)].push_back(sample.latencyMs);
    std::vector<Sample> medians;
    for (auto& [window, latencies] : windows)
        medians.push_back({(window + 0.5) * kWindowSeconds, median(std::move(latencies))});
    return medians;
}

}  // namespace orvelle::bench
