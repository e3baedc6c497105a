#pragma once

#include <QObject>

#include <cstdint>
#include <vector>

#include "paint_watch.h"

namespace orvelle::bench {

/// Reads the time stamp in the demo picture off the screen, each time that a view has a new picture
/// there, and keeps how old it was. Interface thread.
class LatencyProbe : public QObject {
    Q_OBJECT
public:
    explicit LatencyProbe(VideoSurface& view);

    struct Sample {
        double atSeconds;  ///< since the first one
        double latencyMs;
    };
    const std::vector<Sample>& samples() const { return m_samples; }
    /// The latency that `percent` of the pictures did not exceed; NaN without samples.
    double percentileMs(double percent) const;
    /// Growth of the latency: the median slope between the medians of all windows of 10 s, which
    /// a machine that is busy for a while does not bend. NaN for less than two windows.
    double slopeMsPerMinute() const;

private:
    void readPicture();
    std::vector<Sample> windowMedians() const;

    VideoSurface& m_view;  ///< borrowed
    PaintWatch m_watch;
    std::vector<Sample> m_samples;
    uint64_t m_lastStamp = 0;
    int64_t m_firstUs = 0;
};

}  // namespace orvelle::bench
