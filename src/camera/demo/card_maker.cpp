#include "camera/demo/card_maker.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <set>

#include "camera/camera_profile.h"
#include "camera/card/recording_name.h"
#include "camera/card/recording_writer.h"
#include "camera/demo/demo_tone.h"
#include "camera/encoding/painter.h"
#include "core/thread.h"

namespace orvelle {

namespace {

constexpr int64_t kSecondUs = 1'000'000;
constexpr int kDaySec = 86'400;
constexpr int kHourSec = 3600;
constexpr int kMaxWorkers = 8;

/// Minutes of one day that were recorded: from minute `at` of the day on.
struct Run {
    int at, minutes;
};

constexpr Run kRuns[] = {{7 * 60 + 42, 2}, {12 * 60 + 5, 3}, {16 * 60 + 48, 2}, {21 * 60 + 19, 1}};
constexpr int kMinutesPerDay = 13;  ///< by which each day's runs move, so that no two are alike
constexpr Run kLatest = {-3, 3};    ///< of the last full hour

void addRun(std::set<int64_t>& starts, int64_t fromSec, int minutes, int64_t nowSec) {
    for (int64_t sec = fromSec; minutes > 0 && sec + kRecordingSec <= nowSec; --minutes) {
        starts.insert(sec);
        sec += kRecordingSec;
    }
}

std::set<int64_t> plannedStarts(int days, int64_t nowSec, const std::optional<int>& minutesEast) {
    const int64_t eastSec = int64_t{minutesEastOfUtc(minutesEast)} * 60;
    const int64_t today = (nowSec + eastSec) / kDaySec;
    std::set<int64_t> starts;
    for (int64_t day = today - days + 1; day <= today; ++day) {
        const int64_t shift = day % 4 * kMinutesPerDay;
        for (const Run& run : kRuns)
            addRun(starts, day * kDaySec - eastSec + (run.at + shift) * 60, run.minutes, nowSec);
    }
    addRun(starts, nowSec / kHourSec * kHourSec + kLatest.at * 60, kLatest.minutes, nowSec);
    return starts;
}

/// One recording to be made.
struct Minute {
    int64_t startSec;
    int64_t localDayUs;  ///< since midnight on the camera's clock
};

/// Makes recordings one after the other. One thread.
class MinuteMaker {
public:
    explicit MinuteMaker(const DemoFeedConfig& config)
        : m_config(config),
          m_scene(config.format.width, config.format.height, config.scene,
                  config.label.toStdString()),
          m_picture(makePicture(config.format.width, config.format.height)) {}

    QString make(const QDir& directory, const Minute& minute);

private:
    QString prepare();
    std::optional<EncodedFrame> shoot(const Minute& minute, int64_t index);
    bool writeMinute(const QString& path, const Minute& minute);

    const DemoFeedConfig& m_config;
    const DemoScene m_scene;
    FramePtr m_picture;
    VideoEncoder m_video;
    std::vector<EncodedFrame> m_sound;  ///< of a minute, the same in all
    RecordingWriter m_writer;
};

QString MinuteMaker::make(const QDir& directory, const Minute& minute) {
    const QString error = prepare();
    if (!error.isEmpty())
        return error;
    const QString path = directory.filePath(unfinishedName(minute.startSec));
    if (writeMinute(path, minute) &&
        QFile::rename(path, directory.filePath(recordingName(minute.startSec))))
        return {};
    QFile::remove(path);
    return QStringLiteral("cannot write to %1").arg(directory.path());
}

// Each recording begins with a key frame: the encoder starts anew.
QString MinuteMaker::prepare() {
    if (m_scene.isNull() || !m_picture)
        return QStringLiteral("out of memory");
    const QString error = m_video.open(m_config.videoCodec, m_config.format);
    if (!error.isEmpty() || m_config.audioCodec == AV_CODEC_ID_NONE || !m_sound.empty())
        return error;
    AudioEncoder encoder;
    const QString soundError = encoder.open(m_config.audioCodec);
    if (!soundError.isEmpty())
        return soundError;
    DemoTone tone(encoder.sampleRate());
    std::vector<float> samples(static_cast<size_t>(encoder.sampleRate()));
    for (int second = 0; second < kRecordingSec; ++second) {
        tone.fill(samples);
        encoder.encode(samples.data(), static_cast<int>(samples.size()), second * kSecondUs,
                       [this](const EncodedFrame& frame) { m_sound.push_back(frame); });
    }
    return {};
}

std::optional<EncodedFrame> MinuteMaker::shoot(const Minute& minute, int64_t index) {
    if (av_frame_make_writable(m_picture.get()) < 0)
        return {};
    const int64_t sinceStartUs = index * kSecondUs / m_config.format.framesPerSecond;
    const int64_t wallUs = minute.startSec * kSecondUs + sinceStartUs;
    SceneTime time;
    time.sceneUs = wallUs;
    time.localDayUs = minute.localDayUs + sinceStartUs;
    time.stamp = static_cast<uint64_t>(wallUs);
    m_scene.draw(m_picture.get(), time, {});
    return m_video.encode(m_picture.get(), sinceStartUs, false);
}

bool MinuteMaker::writeMinute(const QString& path, const Minute& minute) {
    const auto sound = m_sound.empty() ? std::nullopt : RecordedSound::of(m_sound.front());
    auto nextSound = m_sound.begin();
    bool isGood = true;
    const int64_t count = int64_t{kRecordingSec} * m_config.format.framesPerSecond;
    for (int64_t index = 0; index < count && isGood; ++index) {
        const auto frame = shoot(minute, index);
        if (!frame)
            continue;
        if (!m_writer.isOpen() && !m_writer.open(path, m_config.format, *frame, sound).isEmpty())
            return false;
        for (; nextSound != m_sound.end() && nextSound->timeUs <= frame->timeUs; ++nextSound)
            isGood = m_writer.write(*nextSound, nextSound->timeUs / 1000) && isGood;
        isGood = m_writer.write(*frame, frame->timeUs / 1000) && isGood;
    }
    return m_writer.close() && isGood;
}

/// The work that the makers share.
struct Order {
    QDir directory;
    DemoFeedConfig config;
    std::vector<Minute> minutes;
    std::atomic<size_t> next{0};  ///< orders nothing

    std::mutex mutex;  ///< guards error
    QString error;
};

class MakerThread : public KvThread {
public:
    explicit MakerThread(Order* order) : KvThread(QStringLiteral("card-maker")), m_order(order) {}

    void run() override {
        MinuteMaker maker(m_order->config);
        for (size_t i = m_order->next++; i < m_order->minutes.size(); i = m_order->next++) {
            const QString error = maker.make(m_order->directory, m_order->minutes[i]);
            if (error.isEmpty())
                continue;
            m_order->next = m_order->minutes.size();
            const std::lock_guard<std::mutex> lock(m_order->mutex);
            m_order->error = error;
        }
    }

private:
    Order* const m_order;
};

}  // namespace

QString makeCard(const QString& directory, int days, const DemoFeedConfig& config) {
    Order order;
    order.directory = QDir(directory);
    order.config = config;
    if (!order.directory.mkpath(QStringLiteral(".")))
        return QStringLiteral("cannot make the directory %1").arg(directory);
    const int64_t nowSec = QDateTime::currentSecsSinceEpoch();
    for (const int64_t startSec : plannedStarts(days, nowSec, config.timezoneMinutes)) {
        if (!order.directory.exists(recordingName(startSec)))
            order.minutes.push_back(
                {startSec, localDayUs(startSec * kSecondUs, config.timezoneMinutes)});
    }
    std::vector<std::unique_ptr<MakerThread>> makers;
    const int workers = std::clamp(QThread::idealThreadCount(), 1, kMaxWorkers);
    for (int i = 0; i < workers; ++i) {
        makers.push_back(std::make_unique<MakerThread>(&order));
        makers.back()->start();
    }
    for (const auto& maker : makers)
        maker->waitForEnd();
    return order.error;
}

}  // namespace orvelle
