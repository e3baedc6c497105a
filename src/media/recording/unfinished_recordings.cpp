#include "media/recording/unfinished_recordings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <utility>

#include "media/media_log.h"
#include "media/recording/fragment_finisher.h"

namespace orvelle {

namespace {

/// A recording grows twice a second; one that grows is another program's, or has just been begun
/// on a share whose clock is behind.
constexpr int kWatchMs = 3000;

bool isRecordingName(const QString& name) {
    static const QRegularExpression pattern(QStringLiteral("^\\d{14}(-\\d+)?\\.mp4$"));
    return pattern.match(name).hasMatch();
}

}  // namespace

UnfinishedRecordings::UnfinishedRecordings(std::function<QString()> mediaRoot)
    : KvThread(QStringLiteral("finish-records")),
      m_mediaRoot(std::move(mediaRoot)),
      m_startedAt(QDateTime::currentDateTimeUtc()) {}

void UnfinishedRecordings::run() {
    const QMap<QString, qint64> found = find();
    if (found.isEmpty() || sleepUnlessStopped(kWatchMs))
        return;
    for (auto file = found.cbegin(); file != found.cend() && !isStopped(); ++file) {
        if (QFileInfo(file.key()).size() == file.value())
            finish(file.key());
    }
    if (m_finished > 0 || m_removed > 0)
        qCInfo(lcMedia,
               "recordings of an interrupted run: %d finished, %d without a picture removed",
               m_finished, m_removed);
}

QMap<QString, qint64> UnfinishedRecordings::find() const {
    QMap<QString, qint64> found;
    const QString root = m_mediaRoot();
    for (const QString& camera : QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QDir folder(root + QLatin1Char('/') + camera + QStringLiteral("/Video"));
        for (const QString& name : folder.entryList({QStringLiteral("*.mp4")}, QDir::Files)) {
            if (isStopped())
                return {};
            const QString path = folder.filePath(name);
            if (isRecordingName(name) && mayBeUnfinished(path))
                found.insert(path, QFileInfo(path).size());
        }
    }
    return found;
}

bool UnfinishedRecordings::mayBeUnfinished(const QString& path) const {
    return QFileInfo(path).lastModified() < m_startedAt && FragmentFinisher::isInFragments(path);
}

void UnfinishedRecordings::finish(const QString& path) {
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

}  // namespace orvelle
