#include "media/recording/ending_recordings.h"

#include <QThread>

#include <algorithm>
#include <utility>

#include "media/media_log.h"
#include "media/recording/player_recorder.h"

namespace orvelle {

static constexpr int kLookIntervalMs = 5;

EndingRecordings::EndingRecordings(QObject* parent) : QObject(parent) {}

EndingRecordings::~EndingRecordings() {
    for (std::unique_ptr<KvPlayerRecorder>& recorder : m_recorders) {
        recorder->setCallback(nullptr, nullptr);
        if (recorder->hasEnded())
            continue;
        qCWarning(lcMedia).noquote() << "not finished:" << recorder->path();
        // Its thread uses it until the disk answers or the process ends.
        static_cast<void>(recorder.release());
    }
}

void EndingRecordings::take(std::unique_ptr<KvPlayerRecorder> recorder) {
    if (!recorder)
        return;
    recorder->setCallback(this, onEvent);
    // It may have ended before it could tell so here.
    const bool hasEnded = recorder->hasEnded();
    m_recorders.push_back(std::move(recorder));
    if (hasEnded)
        QMetaObject::invokeMethod(this, &EndingRecordings::reap, Qt::QueuedConnection);
}

/// On the recorder's thread.
int32_t EndingRecordings::onEvent(void* user, int32_t event, double, double) {
    if (event == KvPlayerRecorder::kEnded || event == KvPlayerRecorder::kFailed)
        QMetaObject::invokeMethod(static_cast<EndingRecordings*>(user), &EndingRecordings::reap,
                                  Qt::QueuedConnection);
    return 0;
}

void EndingRecordings::reap() {
    const auto isWaiting = [](const auto& recorder) { return !recorder->hasEnded(); };
    const auto first = std::stable_partition(m_recorders.begin(), m_recorders.end(), isWaiting);
    std::vector<std::unique_ptr<KvPlayerRecorder>> done(std::make_move_iterator(first),
                                                        std::make_move_iterator(m_recorders.end()));
    m_recorders.erase(first, m_recorders.end());
    for (const auto& recorder : done) {
        recorder->stop();
        emit ended(recorder->result());
    }
}

bool EndingRecordings::waitForAll(const QDeadlineTimer& deadline) {
    for (reap(); count() > 0 && !deadline.hasExpired(); reap())
        QThread::msleep(kLookIntervalMs);
    return count() == 0;
}

}  // namespace orvelle
