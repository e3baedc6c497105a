#include "playback_watch.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "frames/picture_clock.h"
#include "median.h"
#include "system/camera_set.h"

extern "C" {
#include <libavutil/frame.h>
}

namespace orvelle::bench {

namespace {

constexpr int64_t kLongestClipUs = 100'000 * int64_t{1'000'000};
constexpr int kSilence = 200;     // the tone is at 6500, a beep at 16000
constexpr int kBeep = 11000;      // between both
constexpr int kGapSamples = 240;  // 5 ms: several periods of the tone
constexpr int kSettleMs = 3000;
constexpr int kQuietSamples = 9600;  // without a beep before the next one counts: 200 ms

}  // namespace

int64_t wallClockUs() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

PictureLog::PictureLog(int64_t clipStartUs)
    : VideoSurface(static_cast<QWidget&>(*this)), m_clipStartUs(clipStartUs) {}

int PictureLog::showPicture(const AVFrame& picture) {
    const int64_t nowUs = wallClockUs();
    const PixelView view{picture.data[0], picture.width, picture.height, picture.linesize[0], 1};
    const auto stamp = readPictureClock(view);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!stamp)
        return 0;
    // The clock holds the low bits of the time since 1970, or the time since a clip's start.
    const auto time = static_cast<int64_t>(*stamp);
    const auto high = static_cast<int64_t>(static_cast<uint64_t>(nowUs) & ~kPictureClockMask);
    m_pictures.push_back({nowUs, time < kLongestClipUs ? m_clipStartUs + time : high | time});
    return 0;
}

void PictureLog::label(int64_t us) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_pictures.empty())
        m_pictures.back().labelUs = us;
}

std::vector<ShownPicture> PictureLog::take() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_pictures, {});
}

size_t PictureLog::size() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_pictures.size();
}

bool SinkLog::start(const QString& sink) {
    m_samples.clear();
    m_firstUs = 0;
    QObject::connect(&m_recorder, &QProcess::readyReadStandardOutput, &m_recorder,
                     [this] { read(); });
    m_recorder.start(QStringLiteral("parec"),
                     {QStringLiteral("--raw"), QStringLiteral("--device=%1.monitor").arg(sink),
                      QStringLiteral("--format=s16le"), QStringLiteral("--rate=48000"),
                      QStringLiteral("--channels=1"), QStringLiteral("--latency-msec=5")});
    if (!m_recorder.waitForStarted())
        return false;
    test::runFor(kSettleMs);
    const bool isHeard = !m_samples.empty();
    m_samples.clear();
    m_firstUs = 0;
    return isHeard;
}

void SinkLog::stop() {
    m_recorder.kill();
    m_recorder.waitForFinished();
}

void SinkLog::read() {
    const QByteArray bytes = m_recorder.readAllStandardOutput();
    const auto* samples = reinterpret_cast<const int16_t*>(bytes.constData());
    m_samples.insert(m_samples.end(), samples, samples + bytes.size() / 2);
    const int64_t firstUs =
        wallClockUs() - static_cast<int64_t>(m_samples.size()) * 1'000'000 / kRate;
    m_firstUs = m_firstUs == 0 ? firstUs : std::min(m_firstUs, firstUs);
}

HeardSound hear(const SinkLog& log, int64_t fromUs, int64_t toUs) {
    const std::vector<int16_t>& samples = log.samples();
    const auto indexOf = [&](int64_t us) {
        const int64_t index = (us - log.firstUs()) * SinkLog::kRate / 1'000'000;
        return std::clamp<int64_t>(index, 0, static_cast<int64_t>(samples.size()));
    };
    HeardSound heard;
    int64_t lastSound = -1;
    int64_t lastBeep = -kQuietSamples;
    for (int64_t i = indexOf(fromUs); i < indexOf(toUs); ++i) {
        const int loud = std::abs(int{samples[static_cast<size_t>(i)]});
        if (loud < kSilence)
            continue;
        if (lastSound >= 0 && i - lastSound > kGapSamples) {
            ++heard.gaps;
            heard.longestGapMs = std::max(
                heard.longestGapMs, static_cast<double>(i - lastSound) * 1000 / SinkLog::kRate);
        } else if (lastSound >= 0) {
            heard.heardSec += static_cast<double>(i - lastSound) / SinkLog::kRate;
        }
        lastSound = i;
        if (loud < kBeep)
            continue;
        if (i - lastBeep > kQuietSamples)
            heard.beepsUs.push_back(log.firstUs() + i * 1'000'000 / SinkLog::kRate);
        lastBeep = i;
    }
    return heard;
}

PictureFigures figuresOf(const std::vector<ShownPicture>& pictures) {
    PictureFigures figures;
    std::vector<double> stepsMs;
    for (size_t i = 1; i < pictures.size(); ++i) {
        const ShownPicture &before = pictures[i - 1], &now = pictures[i];
        stepsMs.push_back(static_cast<double>(now.stampUs - before.stampUs) / 1e3);
        figures.widestMs =
            std::max(figures.widestMs, static_cast<double>(now.wallUs - before.wallUs) / 1e3);
    }
    figures.periodMs = median(stepsMs);
    for (const double stepMs : stepsMs) {
        figures.skipped += stepMs > 1.5 * figures.periodMs ? 1 : 0;
        figures.repeated += stepMs <= 0.0 ? 1 : 0;
    }
    for (const ShownPicture& picture : pictures) {
        const double offMs = static_cast<double>(picture.labelUs - picture.stampUs) / 1e3;
        if (picture.labelUs >= 0)
            figures.labelMs = std::max(figures.labelMs, std::fabs(offMs));
    }
    const ShownPicture &first = pictures.front(), &last = pictures.back();
    figures.speed = static_cast<double>(last.stampUs - first.stampUs) /
                    static_cast<double>(last.wallUs - first.wallUs);
    return figures;
}

std::vector<double> lipSyncMs(const std::vector<ShownPicture>& pictures, const HeardSound& sound) {
    std::vector<double> lateMs;
    for (const int64_t beepUs : sound.beepsUs) {
        const auto after = std::upper_bound(
            pictures.begin(), pictures.end(), beepUs,
            [](int64_t us, const ShownPicture& picture) { return us < picture.wallUs; });
        if (after == pictures.begin())
            continue;
        const ShownPicture& shown = *std::prev(after);
        const double mediaSec = static_cast<double>(shown.stampUs + beepUs - shown.wallUs) / 1e6;
        lateMs.push_back((mediaSec - std::round(mediaSec)) * 1e3);
    }
    return lateMs;
}

}  // namespace orvelle::bench
