#include "media/recording/unfinished_recordings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include "media/media_log.h"
#include "media/recording/fragment_finisher.h"

namespace orvelle {

namespace {

/// A recording grows twice a second; what changed so recently may be one of another program.
constexpr qint64 kRecentMs = 10'000;
constexpr int kWatchMs = 3000;

bool isRecordingName(const QString& name) {
    static const QRegularExpression pattern(QStringLiteral("^\\d{14}(-\\d+)?\\.mp4$"));
    return pattern.match(name).hasMatch();
}

}  // namespace

UnfinishedRecordings::UnfinishedRecordings(const QString& mediaRoot)
    : KvThread(QStringLiteral("finish-records")),
      m_mediaRoot(mediaRoot),
      m_startedAt(QDateTime::currentDateTimeUtc()) {}

void UnfinishedRecordings::run() {
    const QStringList cameras = QDir(m_mediaRoot).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& camera : cameras) {
        const QDir folder(m_mediaRoot + QLatin1Char('/') + camera + QStringLiteral("/Video"));
        for (const QString& name : folder.entryList({QStringLiteral("*.mp4")}, QDir::Files)) {
            if (isStopped())
                return;
            if (isRecordingName(name))
                finish(folder.filePath(name));
        }
    }
    if (m_finished > 0 || m_removed > 0)
        qCInfo(lcMedia,
               "recordings of an interrupted run: %d finished, %d without a picture removed",
               m_finished, m_removed);
}

void UnfinishedRecordings::finish(const QString& path) {
    if (!FragmentFinisher::isInFragments(path) || !isAtRest(path))
        return;
    switch (FragmentFinisher(path).finish()) {
        case FragmentFinisher::Outcome::kFinished:
            ++m_finished;
            break;
        case FragmentFinisher::Outcome::kNoPicture:
            m_removed += QFile::remove(path);
            break;
        default:
            qCWarning(lcMedia).noquote() << "recording stays in fragments:" << path;
    }
}

bool UnfinishedRecordings::isAtRest(const QString& path) {
    const QFileInfo before(path);
    if (before.lastModified() >= m_startedAt)
        return false;
    if (before.lastModified().msecsTo(QDateTime::currentDateTimeUtc()) > kRecentMs)
        return true;
    return !sleepUnlessStopped(kWatchMs) && QFileInfo(path).size() == before.size();
}

}  // namespace orvelle
