#include "frames/mutex_queue.h"

#include <atomic>
#include <thread>

#include "support/suites.h"

namespace {

constexpr int kHourMs = 3600 * 1000;

struct Item {
    static inline std::atomic<int> alive{0};
    int producer;
    int number;
    Item(int p, int n) : producer(p), number(n) { ++alive; }
    ~Item() { --alive; }
};

class MutexQueueTest : public QObject {
    Q_OBJECT

private slots:
    void items_areFreedOnce_whenClearedOrDestroyed() {
        {
            OwningQueue<Item> queue;
            for (int i = 0; i < 3; ++i)
                queue.put(std::make_unique<Item>(0, i));
            QCOMPARE(queue.take()->number, 0);
            QCOMPARE(static_cast<Item*>(queue.first())->number, 1);
            queue.clear();
            QVERIFY(!queue.first() && !queue.last() && !queue.pop() && queue.size() == 0);
            QCOMPARE(Item::alive.load(), 0);
            queue.put(std::make_unique<Item>(0, 9));
            QVERIFY(queue.first() && queue.first() == queue.last());
        }
        QCOMPARE(Item::alive.load(), 0);
    }

    void items_arriveOnceAndInOrder_betweenManyThreads() {
        constexpr int kItems = 5000;
        OwningQueue<Item> queue;
        std::atomic<int> taken{0};
        std::atomic<bool> isOrdered{true};
        std::vector<std::thread> threads;
        for (int p = 0; p < 2; ++p) {
            threads.emplace_back([&, p] {
                for (int n = 0; n < kItems; ++n) {
                    queue.waitForSpace(8, kHourMs);
                    queue.put(std::make_unique<Item>(p, n));
                }
            });
            threads.emplace_back([&] {
                int last[2] = {-1, -1};
                while (taken < 2 * kItems) {
                    queue.waitForItem(kHourMs);
                    const std::unique_ptr<Item> item = queue.take();
                    if (!item)
                        continue;
                    isOrdered = isOrdered && item->number > last[item->producer];
                    last[item->producer] = item->number;
                    // The last one frees the other consumer from its wait.
                    if (++taken == 2 * kItems)
                        queue.interrupt();
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        QVERIFY(isOrdered);
        QVERIFY(!queue.waitForItem(kHourMs) && queue.waitForSpace(0, kHourMs));
        QCOMPARE(Item::alive.load(), 0);
    }
};

const orvelle::test::RegisterSuite<MutexQueueTest> registered;

}  // namespace

#include "mutex_queue_test.moc"
