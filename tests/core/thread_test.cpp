#include "core/thread.h"

#include <QTemporaryDir>

#include <atomic>
#include <functional>
#include <thread>

#include "core/log.h"
#include "core/timer.h"
#include "support/suites.h"

namespace {

constexpr int kHourMs = 3600 * 1000;

struct Sleeper : KvThread {
    explicit Sleeper(int ms) : KvThread(QStringLiteral("sleeper")), m_ms(ms) {}
    void run() override { wasStopped = sleepUnlessStopped(m_ms); }
    bool wasStopped = false;  // plain: waitForEnd() alone must make it visible
    const int m_ms;
};

struct Watched {
    static void fired(void* context) {
        auto* self = static_cast<Watched*>(context);
        const int call = self->calls.fetch_add(1) + 1;
        self->action();
        self->returned = call;
    }
    void waitForCall() const {
        while (calls.load() == 0)
            QThread::yieldCurrentThread();
    }
    std::function<void()> action = [] {};
    std::atomic<int> calls{0};
    int returned = 0;  // plain: a stop alone must make it visible
};

class ThreadTest : public QObject {
    Q_OBJECT

private slots:
    void waitForEnd_showsTheWorkersWrites_whetherItRunsOrHasEnded() {
        for (int round = 0; round < 100; ++round) {
            const bool isStopped = round % 4 == 0;
            Sleeper thread(isStopped ? kHourMs : round % 3);
            thread.start();
            if (isStopped) {
                QVERIFY(!thread.waitForEnd(1));
                thread.stop();
            } else if (round % 8 == 1) {
                QTRY_VERIFY(!KvThread::isThreadRunning(&thread));
            }
            QVERIFY(thread.waitForEnd(round % 5 == 0 ? 10000 : 0));
            QCOMPARE(thread.wasStopped, isStopped);
        }
    }

    void timerStop_waitsForTheCallback_evenTwoAtOnce() {
        Watched watched;
        std::atomic<int> stopping{0};
        watched.action = [&] {
            while (stopping.load() < 2)
                QThread::yieldCurrentThread();
        };
        KvTimer timer(Watched::fired, &watched);
        emit timer.startSignal(kHourMs);
        emit timer.startSignal(1);
        watched.waitForCall();
        const auto stop = [&](int& seen) {
            stopping.fetch_add(1);
            emit timer.stopSignal();
            seen = watched.returned;
        };
        int seen[2] = {};
        std::thread other(stop, std::ref(seen[0]));
        stop(seen[1]);
        other.join();
        QCOMPARE(seen[0] + seen[1], 2);
    }

    void timerStopAndStart_returnAtOnce_whenCalledByTheCallback() {
        Watched watched;
        KvTimer timer(Watched::fired, &watched);
        watched.action = [&] {
            emit timer.stopSignal();
            emit timer.startSignal(0);
        };
        emit timer.startSignal(0);
        watched.waitForCall();
        emit timer.stopSignal();
        QCOMPARE(watched.returned, 1);
    }

    void timerStop_isClean_whenItRacesWithTheTimeout_andEachStepIsLogged() {
        const QTemporaryDir directory;
        QFile log(directory.filePath(QStringLiteral("log")));
        QVERIFY(orvelle::openLogFile(log.fileName()));
        orvelle::setLogEnabled(true);
        Watched watched;
        KvTimer timer(Watched::fired, &watched);
        for (int round = 0; round < 200; ++round) {
            emit timer.startSignal(round % 2);
            emit timer.stopSignal();
            QCOMPARE(watched.returned, watched.calls.load());
        }
        orvelle::log("%s", orvelle::kLogError, QByteArray(9000, 'x').constData());
        orvelle::setLogEnabled(false);
        orvelle::closeLogFile();
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray lines = log.readAll();
        QCOMPARE(lines.count("\n[20"), 400 + watched.calls.load());
        QCOMPARE(lines.size() - lines.lastIndexOf('\n') - 1, 4096);
    }
};

const orvelle::test::RegisterSuite<ThreadTest> kRegistered;

}  // namespace

#include "thread_test.moc"
