#pragma once

#include <QDateTime>
#include <QMap>
#include <QString>

#include <functional>

#include "core/thread.h"

namespace orvelle {

/// Finishes what a crash has left below the media root: makes ordinary files of recordings in
/// fragments and removes those that hold no picture. Says in one line of the log what it did.
class UnfinishedRecordings : public KvThread {
public:
    /// `mediaRoot` is called by the thread, as its disk may not answer.
    explicit UnfinishedRecordings(std::function<QString()> mediaRoot);
    void run() override;

private:
    /// The sizes of those that may be finished, by their paths.
    QMap<QString, qint64> find() const;
    bool mayBeUnfinished(const QString& path) const;
    void finish(const QString& path);

    const std::function<QString()> m_mediaRoot;
    const QDateTime m_startedAt;  ///< what was written since then belongs to a running recording
    int m_finished = 0;           ///< used by the thread alone, as the one below
    int m_removed = 0;
};

}  // namespace orvelle
