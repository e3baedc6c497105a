#include "render/repaint_tick.h"

#include <thread>

#include "support/suites.h"

using orvelle::RepaintTick;

namespace {

class RepaintTickTest : public QObject {
    Q_OBJECT

private slots:
    void request_isServedAtOnce_afterAQuietTime() {
        RepaintTick tick;
        RepaintTick::Client client;
        int repaints = 0;
        client.repaint = [&] { ++repaints; };
        client.isVisible = [] { return true; };
        tick.add(&client);
        tick.request(client);
        tick.request(client);
        // No timer fires here: only what waits in the queue is delivered.
        QCoreApplication::sendPostedEvents(&tick);
        QCOMPARE(repaints, 1);
        tick.request(client);
        QTRY_COMPARE(repaints, 2);
    }

    void lastRequest_isNeverLost_andChangedViewsAreServedTogether() {
        constexpr int kViews = 4;
        constexpr int kRequests = 20'000;
        RepaintTick tick;
        RepaintTick::Client clients[kViews];
        std::atomic<int> wanted[kViews] = {};
        int painted[kViews] = {};
        int repaints = 0;
        std::vector<std::thread> workers;
        for (int i = 0; i < kViews; ++i) {
            clients[i].repaint = [&, i] { painted[i] = wanted[i], ++repaints; };
            clients[i].isVisible = [] { return true; };
            tick.add(&clients[i]);
        }
        for (int i = 0; i < kViews; ++i) {
            workers.emplace_back([&, i] {
                for (int n = 1; n <= kRequests; ++n) {
                    wanted[i] = n;
                    tick.request(clients[i]);
                }
            });
        }
        for (int i = 0; i < kViews; ++i)
            QTRY_COMPARE(painted[i], kRequests);
        for (std::thread& worker : workers)
            worker.join();
        QVERIFY(repaints < kViews * kRequests / 10);
    }
};

const orvelle::test::RegisterSuite<RepaintTickTest> registered;

}  // namespace

#include "repaint_tick_test.moc"
