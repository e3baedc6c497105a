#include "media/card/card_download.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <utility>

#include "device/tutk_device.h"
#include "frames/input_packet.h"
#include "media/card/stream_description.h"
#include "media/media_log.h"

namespace orvelle {

namespace {

constexpr int kMinuteSec = 60;
constexpr int kReadWaitMs = 100;
constexpr int kPauseWaitMs = 50;
constexpr int kCameraWaitMs = 500;
/// The camera's stamps are milliseconds: what differs by less is the same picture.
constexpr double kSameSec = 0.0005;
constexpr char kFormat[] = "mp4";
/// Without sound among the first packets there is taken to be none.
constexpr size_t kPicturesBeforeSound = 60;

QDateTime timeOf(int64_t sec) {
    return QDateTime::fromSecsSinceEpoch(sec);
}

/// A name that is not taken: "NAME.mp4", "NAME-2.mp4", ...
QString freeName(const QString& path) {
    const QFileInfo wanted(path);
    QString name = path;
    for (int number = 2; QFileInfo::exists(name); ++number)
        name = QStringLiteral("%1/%2-%3.%4")
                   .arg(wanted.path(), wanted.completeBaseName())
                   .arg(number)
                   .arg(wanted.suffix());
    return name;
}

}  // namespace

CardDownload::CardDownload(KvTUTKDevice* device, std::vector<Stretch> stretches, QString path)
    : KvThread(QStringLiteral("card-download")),
      m_device(device),
      m_stretches(std::move(stretches)),
      m_path(std::move(path)) {
    for (const Stretch& stretch : m_stretches)
        m_totalSec += static_cast<double>(stretch.toSec - stretch.fromSec);
}

CardDownload::~CardDownload() {
    stop();
    waitForEnd();
}

void CardDownload::run() {
    m_state = fetchAll();
}

CardDownload::State CardDownload::fetchAll() {
    for (const Stretch& stretch : m_stretches) {
        if (!fetchStretch(stretch))
            break;
        m_doneSec += static_cast<double>(stretch.toSec - stretch.fromSec);
    }
    return finish();
}

CardDownload::State CardDownload::finish() {
    if (!m_file && !m_heldPictures.empty() && !isStopped())
        m_hasFailed = createFile(nullptr) < 0 || m_hasFailed;
    const bool wasOpen = m_file && m_file->isOpen();
    const QString part = wasOpen ? m_file->path() : QString();
    const bool isClosed = !wasOpen || m_file->close() >= 0;
    if (!isStopped() && !m_hasFailed && isClosed && wasOpen && m_file->isKept()) {
        m_finalPath = freeName(m_path);
        if (QFile::rename(part, m_finalPath))
            return State::kDone;
        m_hasFailed = true;
    }
    if (!part.isEmpty())
        QFile::remove(part);
    if (isStopped())
        return State::kStopped;
    return m_hasFailed || !isClosed ? State::kNotWritten : State::kNothing;
}

/// False when the download is over.
bool CardDownload::fetchStretch(const Stretch& stretch) {
    m_triedSec = stretch.fromSec;
    while (m_triedSec < stretch.toSec) {
        if (!waitWhilePaused())
            return false;
        switch (fetchFrom(stretch, m_triedSec)) {
            case Outcome::kReached:
                return true;
            case Outcome::kEnded:
                // Before its time: the next recording is missing, or torn.
                m_triedSec = nextMinute(stretch);
                break;
            case Outcome::kRefused:
                ++m_missingMinutes;
                m_triedSec = nextMinute(stretch);
                break;
            case Outcome::kLost:
                if (!waitForCamera())
                    return false;
                break;
            case Outcome::kInterrupted:
                break;
            case Outcome::kNotWritten:
                m_hasFailed = true;
                return false;
        }
    }
    return true;
}

int64_t CardDownload::nextMinute(const Stretch& stretch) const {
    return stretch.recordingsSec +
           ((m_triedSec - stretch.recordingsSec) / kMinuteSec + 1) * kMinuteSec;
}

CardDownload::Outcome CardDownload::fetchFrom(const Stretch& stretch, int64_t fromSec) {
    m_state = State::kRunning;
    const int64_t fileSec =
        stretch.recordingsSec + (fromSec - stretch.recordingsSec) / kMinuteSec * kMinuteSec;
    KvTUTKPlaybackInput input;
    input.setPurpose(KvTUTKPlaybackInput::Purpose::kDownload);
    input.setDevice(m_device);
    input.setStartTime(timeOf(fromSec));
    input.setRecordingStart(timeOf(fileSec));
    if (input.open() < 0)
        return Outcome::kLost;
    const Outcome outcome = receive(input, stretch, fromSec);
    input.close();
    // Sound comes behind its pictures: what is still missing of it is fetched again.
    const bool hasSound = m_soundSec > 0.0;
    const double moment = hasSound ? std::min(m_pictureSec, m_soundSec) : m_pictureSec;
    m_triedSec = std::max(m_triedSec, static_cast<int64_t>(std::floor(moment)));
    return outcome;
}

CardDownload::Outcome CardDownload::receive(KvTUTKPlaybackInput& input, const Stretch& stretch,
                                            int64_t fromSec) {
    while (!isStopped() && !m_isPaused) {
        KvBasePlayerInputPacket* next = nullptr;
        input.waitForVideoPacket(*this, kReadWaitMs);
        const bool wasRunning = input.isRunning();
        if (input.readVideoPacket(&next) < 0) {
            if (wasRunning)
                continue;
            if (writeSounds(input, stretch, fromSec) < 0)
                return Outcome::kNotWritten;
            switch (input.endReason()) {
                case PlaybackEnd::kRefused:
                    return Outcome::kRefused;
                case PlaybackEnd::kFinished:
                    return Outcome::kEnded;
                default:
                    return Outcome::kLost;
            }
        }
        const std::unique_ptr<KvBasePlayerInputPacket> picture(next);
        m_receivedBytes += static_cast<uint64_t>(picture->packet()->size);
        const double moment = static_cast<double>(fromSec) + input.positionOf(picture->time());
        if (moment >= static_cast<double>(stretch.toSec))
            return writeSounds(input, stretch, fromSec) < 0 ? Outcome::kNotWritten
                                                            : Outcome::kReached;
        if (moment > m_pictureSec + kSameSec) {
            picture->setTime(moment);
            if (writePicture(*picture) < 0)
                return Outcome::kNotWritten;
            m_pictureSec = moment;
            noteProgress(stretch);
        }
        if (writeSounds(input, stretch, fromSec) < 0)
            return Outcome::kNotWritten;
    }
    return Outcome::kInterrupted;
}

/// The file is begun with the first key picture, as soon as it is known what the sound is like.
int CardDownload::writePicture(KvBasePlayerInputPacket& packet) {
    if (m_file)
        return m_file->writeVideo(packet);
    m_heldPictures.push_back(packet.reference());
    return m_heldPictures.size() < kPicturesBeforeSound ? 0 : createFile(nullptr);
}

int CardDownload::writeSounds(KvTUTKPlaybackInput& input, const Stretch& stretch, int64_t fromSec) {
    KvBasePlayerInputPacket* next = nullptr;
    while (input.readAudioPacket(&next) == 0) {
        const std::unique_ptr<KvBasePlayerInputPacket> sound(next);
        m_receivedBytes += static_cast<uint64_t>(sound->packet()->size);
        const double moment = static_cast<double>(fromSec) + input.positionOf(sound->time());
        if (moment <= m_soundSec + kSameSec || moment >= static_cast<double>(stretch.toSec))
            continue;
        m_soundSec = moment;
        sound->setTime(moment);
        const int result = m_file || m_heldPictures.empty() ? 0 : createFile(sound.get());
        if (result < 0 || (m_file && m_file->writeSound(*sound) < 0))
            return -1;
    }
    return 0;
}

int CardDownload::createFile(const KvBasePlayerInputPacket* sound) {
    auto held = std::exchange(m_heldPictures, {});
    const KvBasePlayerInputPacket& key = *held.front();
    m_file = std::make_unique<RecordingFile>();
    const StreamParameters pictures = describePictures(key);
    const int result =
        m_file->create(m_path + QStringLiteral(".part"), QLatin1String(kFormat), pictures,
                       sound ? describeSound(*sound) : StreamParameters(), sound,
                       QDateTime::fromMSecsSinceEpoch(std::llround(key.time() * 1000)));
    if (result < 0) {
        qCWarning(lcMedia, "download: no file can be made: %d", result);
        return result;
    }
    for (const auto& picture : held) {
        if (const int written = m_file->writeVideo(*picture); written < 0)
            return written;
    }
    return 0;
}

void CardDownload::noteProgress(const Stretch& stretch) {
    const double done = m_doneSec + m_pictureSec - static_cast<double>(stretch.fromSec);
    m_progress = m_totalSec > 0 ? std::clamp(done / m_totalSec, 0.0, 1.0) : 0.0;
}

bool CardDownload::waitWhilePaused() {
    while (m_isPaused && !isStopped()) {
        m_state = State::kPaused;
        sleepUnlessStopped(kPauseWaitMs);
    }
    return !isStopped();
}

bool CardDownload::waitForCamera() {
    m_state = State::kWaiting;
    do {
        if (sleepUnlessStopped(kCameraWaitMs))
            return false;
    } while (!m_device->isOnline());
    return true;
}

}  // namespace orvelle
