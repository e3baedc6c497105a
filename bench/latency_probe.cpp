#include "latency_probe.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "frames/picture_clock.h"
#include "render/video_view.h"

namespace orvelle::bench {

namespace {

/// Of the clock that the camera stamps with.
int64_t wallClockUs() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

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
    double sumX = 0.0;
    double sumY = 0.0;
    double sumXX = 0.0;
    double sumXY = 0.0;
    for (const Sample& sample : m_samples) {
        const double minutes = sample.atSeconds / 60.0;
        sumX += minutes;
        sumY += sample.latencyMs;
        sumXX += minutes * minutes;
        sumXY += minutes * sample.latencyMs;
    }
    const auto count = static_cast<double>(m_samples.size());
    return (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

}  // namespace orvelle::bench
