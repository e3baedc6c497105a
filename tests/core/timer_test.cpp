#include "core/timer.h"

#include <atomic>
#include <functional>
#include <thread>

#include "support/suites.h"

namespace {

constexpr int kHourMs = 3600 * 1000;

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

class TimerTest : public QObject {
    Q_OBJECT

private slots:
    void callback_neverComes_whenStoppedRearmedOrDestroyedBefore() {
        Watched watched;
        for (const bool stop : {true, false}) {
            KvTimer timer(Watched::fired, &watched);
            emit timer.startSignal(kHourMs);
            emit timer.startSignal(kHourMs);
            if (stop)
                emit timer.stopSignal();
        }
        QCOMPARE(watched.calls.load(), 0);
    }

    void stop_waitsForTheCallback_evenTwoAtOnce() {
        Watched watched;
        std::atomic<int> stopping{0};
        watched.action = [&] {
            while (stopping.load() < 2)
                QThread::yieldCurrentThread();
        };
        KvTimer timer(Watched::fired, &watched);
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

    void stopAndStart_returnAtOnce_whenCalledByTheCallback() {
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

    void stop_isClean_whenItRacesWithTheTimeout() {
        Watched watched;
        KvTimer timer(Watched::fired, &watched);
        for (int round = 0; round < 200; ++round) {
            emit timer.startSignal(round % 2);
            if (round % 4 == 0)
                QThread::yieldCurrentThread();
            emit timer.stopSignal();
            QCOMPARE(watched.returned, watched.calls.load());
        }
    }
};

const orvelle::test::RegisterSuite<TimerTest> kRegistered;

}  // namespace

#include "timer_test.moc"
