#pragma once

#include <QObject>

#include <cstdint>
#include <vector>

class KvVideoView;

namespace orvelle::bench {

/// Reads the time stamp in the demo picture off a view's painted pixels, each time the window
/// has been shown, and keeps how old each new picture was. Interface thread.
class LatencyProbe : public QObject {
    Q_OBJECT
public:
    explicit LatencyProbe(KvVideoView* view);

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

    KvVideoView* const m_view;  ///< borrowed
    std::vector<Sample> m_samples;
    uint64_t m_lastStamp = 0;
    int64_t m_firstUs = 0;
};

}  // namespace orvelle::bench
