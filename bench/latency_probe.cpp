#include "latency_probe.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>

#include "frames/picture_clock.h"
#include "median.h"
#include "render/video_view.h"

namespace orvelle::bench {

namespace {

/// Of the clock that the camera stamps with.
int64_t wallClockUs() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

constexpr double kWindowSeconds = 10.0;

}  // namespace

LatencyProbe::LatencyProbe(KvVideoView* view) : m_view(view) {
    connect(view, &QOpenGLWidget::frameSwapped, this, &LatencyProbe::readPicture);
}

/// Not grabFramebuffer(): that would paint again, perhaps a newer picture than the one shown.
void LatencyProbe::readPicture() {
    const int64_t shownUs = wallClockUs();
    const QSize size = m_view->size() * m_view->devicePixelRatioF();
    double scaleX = 1.0;
    double scaleY = 1.0;
    m_view->pictureScale(&scaleX, &scaleY);
    const int width = static_cast<int>(size.width() * scaleX);
    const int height = static_cast<int>(size.height() * scaleY);
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);

    m_view->makeCurrent();
    QOpenGLFunctions* gl = m_view->context()->functions();
    gl->glBindFramebuffer(GL_FRAMEBUFFER, m_view->defaultFramebufferObject());
    gl->glReadPixels((size.width() - width) / 2, (size.height() - height) / 2, width, height,
                     GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    m_view->doneCurrent();

    // GL rows go upwards: start at the last one and step back.
    const PixelView picture{
        pixels.data() + static_cast<size_t>(height - 1) * static_cast<size_t>(width) * 4, width,
        height, -width * 4, 4};
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
