#include <functional>
#include <thread>

#include "device/request_queue.h"
#include "device/response_listeners.h"
#include "support/suites.h"

using namespace orvelle;

namespace {

const auto kAtOnce = RequestQueue::Clock::time_point::min();
const auto kInAnHour = RequestQueue::Clock::now() + std::chrono::hours(1);

struct Listener {
    static void call(void* self, KvTUTKResponse*) { static_cast<Listener*>(self)->action(); }
    std::function<void()> action;
};

class CommandChannelTest : public QObject {
    Q_OBJECT

private slots:
    void queue_startsWithTheOpeningCommand_andForgetsTheOldSession() {
        RequestQueue queue;
        QVERIFY(!queue.push({1, {}}));
        for (const uint32_t session : {10u, 20u}) {
            queue.open({session, {}});
            QVERIFY(queue.push({session + 1, {}}) && queue.push({session + 2, {}}));
            QCOMPARE(queue.take(kAtOnce)->type(), session);
            QCOMPARE(queue.take(kAtOnce)->type(), session + 1);
            queue.close();
            QVERIFY(!queue.take(kInAnHour) && !queue.push({1, {}}));
        }
    }

    void take_ends_whenFedOrClosed() {
        RequestQueue queue;
        queue.open({1, {}});
        queue.take(kAtOnce);
        for (const bool close : {false, true}) {
            std::thread other([&] { close ? queue.close() : void(queue.push({9, {}})); });
            const auto taken = queue.take(kInAnHour);
            other.join();
            QCOMPARE(taken.has_value(), !close);
        }
    }

    void listeners_areCalledInOrder_andMayChangeTheTableMeanwhile() {
        ResponseListeners table;
        QString heard;
        Listener late{[&] { heard += QLatin1Char('L'); }};
        Listener gone{[&] { heard += QLatin1Char('G'); }};
        Listener changer;
        changer.action = [&] {
            heard += QLatin1Char('C');
            table.remove(&changer);
            table.remove(&gone);
            table.add(&late, Listener::call);
        };
        Listener* const order[] = {&changer, &gone, &changer};
        for (Listener* listener : order)
            table.add(listener, Listener::call);
        KvTUTKResponse response;
        table.dispatch(response);
        table.dispatch(response);
        QCOMPARE(heard, QStringLiteral("CLL"));
    }

    void removal_waitsForTheRunningCall_fromAnotherThread() {
        ResponseListeners table;
        std::atomic<bool> isIn{false};
        std::atomic<bool> isRemoving{false};
        bool isDone = false;  // plain: the removal alone must order it
        Listener slow{[&] {
            isIn = true;
            while (!isRemoving)
                std::this_thread::yield();
            isDone = true;
        }};
        table.add(&slow, Listener::call);
        KvTUTKResponse response;
        std::thread receiver([&] { table.dispatch(response); });
        while (!isIn)
            std::this_thread::yield();
        isRemoving = true;
        table.remove(&slow);
        const bool wasDone = isDone;
        receiver.join();
        QVERIFY(wasDone);
    }
};

const orvelle::test::RegisterSuite<CommandChannelTest> kRegistered;

}  // namespace

#include "command_channel_test.moc"
