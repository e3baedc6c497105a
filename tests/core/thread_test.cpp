#include "core/thread.h"

#include "support/suites.h"

namespace {

constexpr int kHourMs = 3600 * 1000;
constexpr int kDeadlineMs = 10000;

struct SleepingThread : KvThread {
    explicit SleepingThread(int ms) : KvThread(QStringLiteral("decoder of video")), m_ms(ms) {}
    void run() override {
        QFile comm(QStringLiteral("/proc/thread-self/comm"));
        if (comm.open(QIODevice::ReadOnly))
            systemName = comm.readAll().trimmed();
        wasStopped = sleepUnlessStopped(m_ms);
        ended = true;
    }

    // Plain: waitForEnd() alone must make them visible.
    QByteArray systemName;
    bool wasStopped = false;
    bool ended = false;
    const int m_ms;
};

class ThreadTest : public QObject {
    Q_OBJECT

private slots:
    void waitForEnd_showsTheWorkersWrites_whetherItRunsOrHasEnded() {
        for (int round = 0; round < 100; ++round) {
            SleepingThread thread(round % 3);
            thread.start();
            if (round % 8 == 0)
                QTRY_VERIFY_WITH_TIMEOUT(!KvThread::isThreadRunning(&thread), kDeadlineMs);
            QVERIFY(thread.waitForEnd(round % 5 == 0 ? kDeadlineMs : 0));
            QVERIFY(thread.ended && !thread.wasStopped);
            QCOMPARE(thread.systemName, QByteArray("decoder of vide"));
        }
    }

    void stop_endsTheSleep_beforeOrDuringIt() {
        for (const bool isStoppedFirst : {true, false}) {
            SleepingThread thread(kHourMs);
            if (isStoppedFirst)
                thread.stop();
            thread.start();
            QVERIFY(isStoppedFirst || !thread.waitForEnd(1));
            thread.stop();
            QVERIFY(thread.waitForEnd(kDeadlineMs));
            QVERIFY(thread.wasStopped);
        }
    }
};

const orvelle::test::RegisterSuite<ThreadTest> kRegistered;

}  // namespace

#include "thread_test.moc"
