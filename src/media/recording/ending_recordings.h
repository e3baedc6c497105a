#pragma once

#include <QDeadlineTimer>
#include <QObject>

#include <memory>
#include <vector>

#include "media/stages/recording_result.h"

class KvPlayerRecorder;

namespace orvelle {

/// Recordings that nobody waits for any more: each writes what it has and closes its file on its
/// own thread, however long its disk takes. Interface thread.
class EndingRecordings : public QObject {
    Q_OBJECT
public:
    explicit EndingRecordings(QObject* parent = nullptr);
    /// Leaves those that still wait for their disk to the end of the process: they cannot be
    /// interrupted, and what they have written plays.
    ~EndingRecordings() override;

    /// The recording was released by its player. Null is harmless.
    void take(std::unique_ptr<KvPlayerRecorder> recorder);
    int count() const { return static_cast<int>(m_recorders.size()); }
    /// Blocks until all have ended, no longer than the deadline; whether they have.
    bool waitForAll(const QDeadlineTimer& deadline);

signals:
    /// One has ended, and its file is closed.
    void ended(const orvelle::RecordingResult& result);

private:
    static int32_t onEvent(void* user, int32_t event, double a, double b);
    void reap();

    std::vector<std::unique_ptr<KvPlayerRecorder>> m_recorders;
};

}  // namespace orvelle
