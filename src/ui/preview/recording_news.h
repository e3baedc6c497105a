#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

#include "media/recording/ending_recordings.h"

class KvPlayerRecorder;

namespace orvelle {

/// Why a file could not be written, for the user; empty where nothing helpful can be said.
QString recordingFaultText(RecordingFault fault);

/// What came of recordings that ended by themselves or with their tile: those that end together
/// give one message, which waits for a window. One for the application; it outlives the main
/// window. Interface thread.
class RecordingNews : public QObject {
    Q_OBJECT
public:
    struct Message {
        QString text;  ///< empty: there is none
        bool isWarning = false;
    };

    /// Belongs to the application, and is made when first needed.
    static RecordingNews& instance();
    /// Waits for recordings that are still being closed, no longer than the deadline; nothing is
    /// told after. False when some are left to their disk: their threads run until the process
    /// ends, so that nothing they may use can be destroyed.
    static bool shutDown(const QDeadlineTimer& deadline);

    /// Takes over a recording that its player has released. With `isTold` somebody else tells that
    /// it was saved, and only a failure is news.
    void endLater(std::unique_ptr<KvPlayerRecorder> recorder, bool isTold);
    void add(const RecordingResult& result);
    /// How long a disk that hangs may hold up the end of the program; runs from the first call.
    QDeadlineTimer endDeadline();
    /// How many are still being closed.
    int pending() const { return m_ending.count() + m_endingTold.count(); }

    /// Raises ready() again for what nobody has taken.
    void announce();
    /// What has gathered; the next call begins anew.
    Message takeMessage();

signals:
    void ready();
    /// pending() has become 0.
    void allEnded();

private:
    explicit RecordingNews(QObject* parent);
    void noteEnd();
    void gather();

    EndingRecordings m_ending;
    EndingRecordings m_endingTold;
    std::vector<RecordingResult> m_results;
    QTimer m_timer;                                         ///< runs while more may come
    int m_delays = 0;                                       ///< of the present message
    QDeadlineTimer m_endDeadline{QDeadlineTimer::Forever};  ///< until endDeadline() is asked for
};

}  // namespace orvelle
