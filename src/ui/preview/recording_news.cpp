#include "ui/preview/recording_news.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSet>

#include "media/recording/player_recorder.h"
#include "ui/widgets/text.h"

namespace orvelle {

namespace {

/// Recordings that end within this belong together.
constexpr int kGatherMs = 300;
/// What is still being closed is waited for so many times.
constexpr int kMaxDelays = 10;
constexpr int kMaxEndMs = 10'000;

struct Saved {
    int count = 0;  ///< recordings, each of one file or more
    QStringList files;

    void add(const QStringList& ofOne) {
        count += !ofOne.isEmpty();
        files += ofOne;
    }
};

/// The file, or the folder that holds all.
QString placeOf(const QStringList& files) {
    if (files.size() == 1)
        return QDir::toNativeSeparators(files.first());
    QSet<QString> folders;
    for (const QString& file : files)
        folders.insert(QFileInfo(file).absolutePath());
    // Each camera has a folder of its own, with one for its recordings in it.
    const QString folder = *folders.constBegin();
    return QDir::toNativeSeparators(
        folders.size() == 1 ? folder : QFileInfo(QFileInfo(folder).path()).path());
}

QString outcomeText(int count, bool isEarly) {
    if (count == 1)
        return isEarly ? text("the_recording_ended_early_it_is_saved_to")
                       : text("the_video_you_recorded_is_save_to");
    return (isEarly ? text("recordings_ended_early_they_are_saved_to")
                    : text("recordings_were_saved_to"))
        .arg(count);
}

}  // namespace

QString recordingFaultText(RecordingFault fault) {
    switch (fault) {
        case RecordingFault::kDiskFull:
            return text("the_disk_is_full");
        case RecordingFault::kQuota:
            return text("the_disk_space_allowed_to_you_is_used_up");
        case RecordingFault::kFileTooLarge:
            return text("no_file_can_be_larger_there");
        case RecordingFault::kDiskTooSlow:
            return text("the_disk_does_not_keep_up");
        default:
            return {};
    }
}

RecordingNews::RecordingNews(QObject* parent) : QObject(parent) {
    m_timer.setSingleShot(true);
    m_timer.setInterval(kGatherMs);
    connect(&m_timer, &QTimer::timeout, this, &RecordingNews::gather);
    connect(&m_ending, &EndingRecordings::ended, this, [this](const RecordingResult& result) {
        add(result);
        noteEnd();
    });
    connect(&m_endingTold, &EndingRecordings::ended, this, [this](const RecordingResult& result) {
        if (result.fault != RecordingFault::kNone || result.lacksSound)
            add(result);
        noteEnd();
    });
}

RecordingNews& RecordingNews::instance() {
    QCoreApplication* application = QCoreApplication::instance();
    auto* news = application->findChild<RecordingNews*>(QString(), Qt::FindDirectChildrenOnly);
    return news ? *news : *new RecordingNews(application);
}

bool RecordingNews::shutDown(const QDeadlineTimer& deadline) {
    RecordingNews& news = instance();
    bool areAllClosed = news.m_ending.waitForAll(deadline);
    areAllClosed = news.m_endingTold.waitForAll(deadline) && areAllClosed;
    delete &news;
    return areAllClosed;
}

QDeadlineTimer RecordingNews::endDeadline() {
    if (m_endDeadline.isForever())
        m_endDeadline.setRemainingTime(kMaxEndMs);
    return m_endDeadline;
}

void RecordingNews::endLater(std::unique_ptr<KvPlayerRecorder> recorder, bool isTold) {
    (isTold ? m_endingTold : m_ending).take(std::move(recorder));
}

void RecordingNews::noteEnd() {
    if (pending() == 0)
        emit allEnded();
}

void RecordingNews::add(const RecordingResult& result) {
    // Dropped, or too short to hold anything: no news.
    if (result.files.isEmpty() && result.fault == RecordingFault::kNone)
        return;
    m_results.push_back(result);
    m_timer.start();
}

void RecordingNews::announce() {
    if (!m_results.empty())
        m_timer.start();
}

void RecordingNews::gather() {
    if (m_ending.count() > 0 && ++m_delays <= kMaxDelays) {
        m_timer.start();
        return;
    }
    m_delays = 0;
    emit ready();
}

RecordingNews::Message RecordingNews::takeMessage() {
    const std::vector<RecordingResult> results = std::move(m_results);
    m_results.clear();
    Message message;
    QStringList lines, causes;
    Saved whole, early;
    int failed = 0;
    bool lacksSound = false;
    for (const RecordingResult& result : results) {
        const bool hasFault = result.fault != RecordingFault::kNone;
        (hasFault ? early : whole).add(result.files);
        failed += result.files.isEmpty();
        message.isWarning = message.isWarning || hasFault;
        lacksSound = lacksSound || result.lacksSound;
        const QString cause = recordingFaultText(result.fault);
        if (!cause.isEmpty() && !causes.contains(cause))
            causes += cause;
    }
    lines += causes;
    if (early.count > 0)
        lines << outcomeText(early.count, true) << placeOf(early.files);
    if (whole.count > 0)
        lines << outcomeText(whole.count, false) << placeOf(whole.files);
    if (failed > 0)
        lines << text("recording_failed");
    if (lacksSound)
        lines << text("recorded_without_sound");
    message.text = lines.join(QLatin1Char('\n'));
    return message;
}

}  // namespace orvelle
