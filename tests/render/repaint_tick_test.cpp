#include "render/repaint_tick.h"

#include <thread>

#include "support/suites.h"

namespace {

class RepaintTickTest : public QObject {
    Q_OBJECT

private slots:
    void lastRequest_isNeverLost_andManyShareOneRepaint() {
        constexpr int kRequests = 20'000;
        orvelle::RepaintTick tick;
        orvelle::RepaintTick::Client clients[3];
        std::atomic<int> wanted[3] = {};
        int painted[3] = {};
        int repaints = 0;
        std::vector<std::thread> workers;
        for (int i = 0; i < 3; ++i) {
            clients[i].repaint = [&, i] {
                painted[i] = wanted[i];
                if (++repaints == 1)
                    tick.request(clients[i]);
            };
            tick.add(&clients[i]);
        }
        tick.request(clients[0]);
        // After a quiet time no timer comes first: only what waits in the queue is delivered here.
        QCoreApplication::sendPostedEvents(&tick);
        QCOMPARE(repaints, 1);
        QTRY_COMPARE(repaints, 2);
        for (int i = 0; i < 3; ++i) {
            workers.emplace_back([&, i] {
                while (wanted[i] < kRequests) {
                    ++wanted[i];
                    tick.request(clients[i]);
                }
            });
        }
        for (const int& last : painted)
            QTRY_COMPARE(last, kRequests);
        for (std::thread& worker : workers)
            worker.join();
        QVERIFY(repaints < kRequests / 10);
    }
};

const orvelle::test::RegisterSuite<RepaintTickTest> registered;

}  // namespace

#include "repaint_tick_test.moc"
