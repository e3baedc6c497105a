#pragma once

#include <QDateTime>
#include <QString>

#include "core/thread.h"

namespace orvelle {

/// Finishes what a crash has left below the media root: makes ordinary files of recordings in
/// fragments and removes those that hold no picture. Says in one line of the log what it did.
class UnfinishedRecordings : public KvThread {
public:
    explicit UnfinishedRecordings(const QString& mediaRoot);
    void run() override;

private:
    bool isAtRest(const QString& path);
    void finish(const QString& path);

    const QString m_mediaRoot;
    const QDateTime m_startedAt;  ///< what was written since then belongs to a running recording
    int m_finished = 0;           ///< used by the thread alone, as the one below
    int m_removed = 0;
};

}  // namespace orvelle
