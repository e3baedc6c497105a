#pragma once

#include <QProcess>
#include <QWidget>

#include <cstdint>
#include <mutex>
#include <vector>

#include "render/video_surface.h"

struct AVFrame;

namespace orvelle::bench {

int64_t wallClockUs();

/// A picture as it was handed to the view.
struct ShownPicture {
    int64_t wallUs;
    int64_t stampUs;       ///< of the picture's own clock
    int64_t labelUs = -1;  ///< the moment that the player told for it; -1: none
};

/// Stands in for a view: reads the clock of each picture that a player shows. Any thread.
class PictureLog : public QWidget, public VideoSurface {
public:
    /// `clipStartUs` stands for the 0 of a clip's picture clock.
    explicit PictureLog(int64_t clipStartUs);

    int showPicture(const AVFrame& picture) override;
    void showNothing() override {}
    bool snapshot(const QString&, const QDateTime& = {}) override { return false; }
    void pictureScale(double*, double*) const override {}
    PictureScale fit() const override { return {}; }
    QImage grabView() override { return {}; }

    /// The moment, since 1970, that the player tells for the last picture.
    void label(int64_t us);
    std::vector<ShownPicture> take();
    /// Of those not taken yet.
    size_t size() const;

private:
    void repaintPicture() override {}

    const int64_t m_clipStartUs;
    mutable std::mutex m_mutex;  ///< guards the one below
    std::vector<ShownPicture> m_pictures;
};

/// What the sink of a sound server plays, with the time at which each sample leaves it.
class SinkLog {
public:
    ~SinkLog() { stop(); }

    /// Of the server of PULSE_SERVER; false when nothing can be heard there. Takes a while, since a
    /// sink hands out its first seconds late.
    bool start(const QString& sink);
    void stop();

    int64_t firstUs() const { return m_firstUs; }
    const std::vector<int16_t>& samples() const { return m_samples; }  ///< mono, at kRate
    static constexpr int kRate = 48000;

private:
    void read();

    QProcess m_recorder;
    std::vector<int16_t> m_samples;
    int64_t m_firstUs = 0;  ///< wall clock at the first sample, by the least delayed read
};

/// What the demo's sound tells: a tone without end and a louder beep at each full second.
struct HeardSound {
    std::vector<int64_t> beepsUs;  ///< wall clock at their onsets
    double longestGapMs = 0.0;     ///< of silence between sound and sound
    int gaps = 0;
    double heardSec = 0.0;
};
HeardSound hear(const SinkLog& log, int64_t fromUs, int64_t toUs);

/// What a stretch of shown pictures tells.
struct PictureFigures {
    double periodMs = 0.0;  ///< between two recorded ones
    double speed = 0.0;     ///< of the recording's time to this machine's
    int skipped = 0;
    int repeated = 0;
    double widestMs = 0.0;  ///< between two that were shown one after the other
    double labelMs = 0.0;   ///< the worst by which the moment told was wrong
};
/// Of three pictures at least.
PictureFigures figuresOf(const std::vector<ShownPicture>& pictures);

/// By how much each beep was late against the pictures, in ms.
std::vector<double> lipSyncMs(const std::vector<ShownPicture>& pictures, const HeardSound& sound);

}  // namespace orvelle::bench
