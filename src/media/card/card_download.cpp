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
/// What whoever detaches may have to wait.
constexpr int kReadWaitMs = 30;
constexpr int kPauseWaitMs = 50;
constexpr int kCameraWaitMs = 500;
/// The camera's stamps are milliseconds: what differs by less is the same picture.
constexpr double kSameSec = 0.0005;
/// Others may take a name at the same moment, or look into a new file.
constexpr int kNameTries = 5;
constexpr int kNameRetryMs = 100;
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
      m_stretches(std::move(stretches)),
      m_path(std::move(path)),
      m_device(device) {
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

void CardDownload::detach() {
    stop();
    const std::lock_guard<std::mutex> lock(m_deviceMutex);
    if (m_input) {
        m_input->close();
        m_input->setDevice(nullptr);
    }
    m_device = nullptr;
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
    if (isStopped()) {
        if (m_file)
            m_file->discard();
        return State::kStopped;
    }
    if (!m_file && !m_heldPictures.empty())
        m_error = std::min(m_error, createFile(nullptr));
    if (m_file && m_file->isOpen()) {
        const QString part = m_file->path();
        const int closed = m_file->close();
        if (m_error == 0)
            m_error = std::min(closed, 0);
        if (m_file->isKept())
            m_finalPath = nameFile(part);
    }
    if (m_error < 0)
        return State::kNotWritten;
    return m_finalPath.isEmpty() ? State::kNothing : State::kDone;
}

/// What cannot be renamed stays what it is called, rather than be lost.
QString CardDownload::nameFile(const QString& part) {
    for (int tries = 0; tries < kNameTries; ++tries) {
        const QString name = freeName(m_path);
        if (QFile::rename(part, name))
            return name;
        sleepUnlessStopped(kNameRetryMs);
    }
    qCWarning(lcMedia).noquote() << "download: cannot be renamed:" << part;
    return part;
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
            case Outcome::kMissing:
                ++m_missingMinutes;
                m_triedSec = nextMinute(stretch);
                break;
            case Outcome::kRefused:
                // No card, or too many playbacks: either may change.
            case Outcome::kLost:
                if (!waitForCamera())
                    return false;
                break;
            case Outcome::kInterrupted:
                break;
            case Outcome::kNotWritten:
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
    if (!openInput(stretch, fromSec))
        return Outcome::kLost;
    const Outcome outcome = receive(stretch, fromSec);
    closeInput();
    // Sound comes behind its pictures: what is still missing of it is fetched again.
    const bool hasSound = m_soundSec > 0.0;
    const double moment = hasSound ? std::min(m_pictureSec, m_soundSec) : m_pictureSec;
    m_triedSec = std::max(m_triedSec, static_cast<int64_t>(std::floor(moment)));
    return outcome;
}

bool CardDownload::openInput(const Stretch& stretch, int64_t fromSec) {
    const int64_t fileSec =
        stretch.recordingsSec + (fromSec - stretch.recordingsSec) / kMinuteSec * kMinuteSec;
    const std::lock_guard<std::mutex> lock(m_deviceMutex);
    if (!m_device)
        return false;
    m_input = std::make_unique<KvTUTKPlaybackInput>();
    m_input->setPurpose(KvTUTKPlaybackInput::Purpose::kDownload);
    m_input->setDevice(m_device);
    m_input->setStartTime(timeOf(fromSec));
    m_input->setRecordingStart(timeOf(fileSec));
    return m_input->open() >= 0;
}

void CardDownload::closeInput() {
    const std::lock_guard<std::mutex> lock(m_deviceMutex);
    m_input.reset();
}

CardDownload::Outcome CardDownload::receive(const Stretch& stretch, int64_t fromSec) {
    while (!isStopped() && !m_isPaused) {
        bool hasEnded = false;
        const auto picture = nextPicture(fromSec, &hasEnded);
        const bool isBeyond = picture && picture->time() >= static_cast<double>(stretch.toSec);
        if (picture && !isBeyond && picture->time() > m_pictureSec + kSameSec) {
            const double moment = picture->time();
            if (m_error = std::min(writePicture(*picture), 0); m_error < 0)
                return Outcome::kNotWritten;
            m_pictureSec = moment;
            noteProgress(stretch);
        }
        if (m_error = writeSounds(stretch, fromSec); m_error < 0)
            return Outcome::kNotWritten;
        if (isBeyond)
            return Outcome::kReached;
        if (hasEnded)
            return outcomeOfEnd();
    }
    return Outcome::kInterrupted;
}

CardDownload::Outcome CardDownload::outcomeOfEnd() {
    const std::lock_guard<std::mutex> lock(m_deviceMutex);
    switch (m_input->endReason()) {
        case PlaybackEnd::kMissing:
            return Outcome::kMissing;
        case PlaybackEnd::kRefused:
            return Outcome::kRefused;
        case PlaybackEnd::kFinished:
            return Outcome::kEnded;
        default:
            return Outcome::kLost;
    }
}

/// With its moment as its time, as the sound below; null for none within the wait.
std::unique_ptr<KvBasePlayerInputPacket> CardDownload::nextPicture(int64_t fromSec,
                                                                   bool* hasEnded) {
    const std::lock_guard<std::mutex> lock(m_deviceMutex);
    if (isStopped())
        return nullptr;
    KvBasePlayerInputPacket* next = nullptr;
    m_input->waitForVideoPacket(*this, kReadWaitMs);
    const bool wasRunning = m_input->isRunning();
    if (m_input->readVideoPacket(&next) < 0) {
        *hasEnded = !wasRunning;
        return nullptr;
    }
    m_receivedBytes += static_cast<uint64_t>(next->packet()->size);
    next->setTime(static_cast<double>(fromSec) + m_input->positionOf(next->time()));
    return std::unique_ptr<KvBasePlayerInputPacket>(next);
}

std::unique_ptr<KvBasePlayerInputPacket> CardDownload::nextSound(int64_t fromSec) {
    const std::lock_guard<std::mutex> lock(m_deviceMutex);
    KvBasePlayerInputPacket* next = nullptr;
    if (isStopped() || m_input->readAudioPacket(&next) < 0)
        return nullptr;
    m_receivedBytes += static_cast<uint64_t>(next->packet()->size);
    next->setTime(static_cast<double>(fromSec) + m_input->positionOf(next->time()));
    return std::unique_ptr<KvBasePlayerInputPacket>(next);
}

/// The file is begun with the first key picture, as soon as it is known what the sound is like.
int CardDownload::writePicture(KvBasePlayerInputPacket& packet) {
    if (m_file)
        return m_file->writeVideo(packet);
    m_heldPictures.push_back(packet.reference());
    return m_heldPictures.size() < kPicturesBeforeSound ? 0 : createFile(nullptr);
}

int CardDownload::writeSounds(const Stretch& stretch, int64_t fromSec) {
    while (const auto sound = nextSound(fromSec)) {
        const double moment = sound->time();
        if (moment <= m_soundSec + kSameSec || moment >= static_cast<double>(stretch.toSec))
            continue;
        m_soundSec = moment;
        int result = m_file || m_heldPictures.empty() ? 0 : createFile(sound.get());
        if (result >= 0 && m_file)
            result = m_file->writeSound(*sound);
        if (result < 0)
            return result;
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
    while (!sleepUnlessStopped(kCameraWaitMs)) {
        const std::lock_guard<std::mutex> lock(m_deviceMutex);
        if (!m_device || m_device->isOnline())
            return m_device != nullptr;
    }
    return false;
}

}  // namespace orvelle
