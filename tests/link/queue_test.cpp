#include <QtTest>

#include "link/client/frame_queue.h"
#include "link/server/media_queue.h"
#include "link/server/send_cap.h"
#include "support/suites.h"

namespace orvelle::test {

namespace {

SharedFrame frameOf(size_t size) {
    return std::make_shared<std::vector<uint8_t>>(size);
}

LinkFrame received(uint32_t number, bool isKey, size_t size = 10) {
    LinkFrame frame;
    frame.number = number;
    frame.info[2] = isKey;
    frame.data.resize(size);
    return frame;
}

/// Everything that a queue gives at one time, as "v<number>.<fragment>" and "a<number>".
QByteArray takeAll(MediaQueue& queue, int64_t nowMs, int most = 1000) {
    QByteArrayList all;
    EncodedMessage message;
    while (most-- > 0 && queue.next(nowMs, &message)) {
        const auto decoded = decodeMessage(message.bytes.data(), message.size);
        const auto& fragment = std::get<FrameFragment>(*decoded);
        const QByteArray number = QByteArray::number(fragment.number);
        QByteArray text = (fragment.isVideo ? "v" : "a") + number;
        if (fragment.isVideo)
            text += '.' + QByteArray::number(fragment.index);
        all += text;
        queue.advance();
    }
    return all.join(' ');
}

/// Everything a reader gets, as "<number>" or "gap<first missing>".
QByteArray readAll(FrameQueue& queue) {
    QByteArrayList all;
    LinkFrame frame;
    uint32_t number = 0;
    for (auto next = queue.pop(&frame, &number); next != FrameQueue::Next::Nothing;
         next = queue.pop(&frame, &number)) {
        const bool isGap = next == FrameQueue::Next::Gap;
        all += QByteArray(isGap ? "gap" : "") + QByteArray::number(number);
    }
    return all.join(' ');
}

}  // namespace

/// What the queues at both ends drop, and the send cap, on a clock of the test's own.
class QueueTest : public QObject {
    Q_OBJECT

private slots:
    void mediaQueue_sendsSoundFirst_betweenFragments();
    void mediaQueue_dropsWholeGroups_whenOld_data();
    void mediaQueue_dropsWholeGroups_whenOld();
    void mediaQueue_awaitsKey_whenFrameRefused();
    void recordingQueues_dropNothing();
    void frameQueue_reportsGapOnce_andGoesOnAtKey_data();
    void frameQueue_reportsGapOnce_andGoesOnAtKey();
    void frameQueue_forgetsOldest_whenSoundOverflows();
    void sendCap_settlesBelowPath_data();
    void sendCap_settlesBelowPath();
};

void QueueTest::mediaQueue_sendsSoundFirst_betweenFragments() {
    ServerCounters counters;
    MediaQueue queue(counters);
    queue.pushVideo({0x4E, 1, 0}, frameOf(kFragmentPayloadBytes * 2 + 1), 0);
    QCOMPARE(takeAll(queue, 0, 1), QByteArray("v0.0"));
    queue.pushAudio({}, frameOf(5), 0);
    queue.pushAudio({}, frameOf(5), 0);
    QCOMPARE(takeAll(queue, 0), QByteArray("a0 a1 v0.1 v0.2"));
    QCOMPARE(counters.audioFramesSent.load(), uint64_t{2});
    QCOMPARE(counters.videoFramesSent.load(), uint64_t{1});
    queue.pushAudio({}, frameOf(5), 0);
    QCOMPARE(takeAll(queue, 601), QByteArray());
}

void QueueTest::mediaQueue_dropsWholeGroups_whenOld_data() {
    QTest::addColumn<QByteArray>("pushed");  // one frame every 100 ms, K is a key frame
    QTest::addColumn<int>("begun");          // fragments taken of the first before
    QTest::addColumn<int>("atMs");
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<QByteArray>("sentThen");  // after "ppKp" more
    QTest::newRow("young") << QByteArray("Kpp") << 0 << 600 << QByteArray("v0 v1 v2")
                           << QByteArray("v3 v4 v5 v6");
    QTest::newRow("no key waits") << QByteArray("Kpp") << 0 << 601 << QByteArray()
                                  << QByteArray("v5 v6");
    QTest::newRow("up to the next key")
        << QByteArray("pppKp") << 0 << 701 << QByteArray("v3 v4") << QByteArray("v5 v6 v7 v8");
    QTest::newRow("two groups") << QByteArray("KpKpKp") << 0 << 801 << QByteArray("v4 v5")
                                << QByteArray("v6 v7 v8 v9");
    QTest::newRow("a begun frame is finished")
        << QByteArray("KppKp") << 1 << 750 << QByteArray("v0 v3 v4") << QByteArray("v5 v6 v7 v8");
    QTest::newRow("a begun frame alone")
        << QByteArray("Kpp") << 1 << 5000 << QByteArray("v0") << QByteArray("v5 v6");
}

void QueueTest::mediaQueue_dropsWholeGroups_whenOld() {
    QFETCH(QByteArray, pushed);
    QFETCH(int, begun);
    QFETCH(int, atMs);
    ServerCounters counters;
    MediaQueue queue(counters);
    const auto lastFragments = [&](int64_t nowMs) {
        // Each frame is of two fragments; the second stands for the frame.
        QByteArrayList frames;
        for (const QByteArray& each : takeAll(queue, nowMs).split(' '))
            if (each.endsWith(".1"))
                frames += each.chopped(2);
        return frames.join(' ');
    };
    int64_t clock = 0;
    for (const char kind : pushed) {
        queue.pushVideo({0x4E, uint8_t(kind == 'K'), 0}, frameOf(2000), clock);
        clock += 100;
    }
    takeAll(queue, clock, begun);
    QTEST(lastFragments(atMs), "sent");
    for (const char kind : QByteArray("ppKp"))
        queue.pushVideo({0x4E, uint8_t(kind == 'K'), 0}, frameOf(2000), atMs);
    QTEST(lastFragments(atMs), "sentThen");
    QCOMPARE(counters.videoFramesSent + counters.videoFramesDropped, uint64_t(pushed.size() + 4));
}

// A whole group that grows old in front of the refused frame does not make up for it.
void QueueTest::mediaQueue_awaitsKey_whenFrameRefused() {
    ServerCounters counters;
    MediaQueue queue(counters);
    queue.pushVideo({0x4E, 1, 0}, frameOf(5), 0);
    queue.pushVideo({0x4E, 1, 0}, frameOf(5), 500);
    queue.skipVideo();
    QCOMPARE(takeAll(queue, 601), QByteArray("v1.0"));
    queue.pushVideo({0x4E, 0, 0}, frameOf(5), 602);
    queue.pushVideo({0x4E, 1, 0}, frameOf(5), 603);
    QCOMPARE(takeAll(queue, 603), QByteArray("v4.0"));
}

void QueueTest::recordingQueues_dropNothing() {
    ServerCounters counters;
    MediaQueue sender(counters, MediaQueue::Kind::kRecording);
    // By number, and by size.
    for (const size_t bytes : {size_t{10}, size_t{100'000}}) {
        int pushed = 0;
        for (; sender.hasRoom() && pushed < 1000; ++pushed) {
            if (pushed % 2 == 0)
                sender.pushVideo({0x4E, 0, 0}, frameOf(bytes), 0);
            else
                sender.pushAudio({}, frameOf(10), 0);
        }
        QCOMPARE(pushed, bytes == 10 ? 256 : 11);
        const uint64_t before = counters.videoFramesSent + counters.audioFramesSent;
        takeAll(sender, 60'000, 100'000);
        QCOMPARE(counters.videoFramesSent + counters.audioFramesSent - before, uint64_t(pushed));
        QVERIFY(sender.isEmpty() && sender.bytes() == 0 && sender.hasRoom());
    }
    QCOMPARE(counters.videoFramesDropped.load(), uint64_t{0});
    for (const auto kind : {FrameQueue::Kind::Video, FrameQueue::Kind::Audio}) {
        FrameQueue reader(kind, FrameQueue::kRecording);
        for (uint32_t i = 0; i < 1536; ++i)
            reader.push(received(i, false, 5400));
        QCOMPARE(reader.size(), 1536);
    }
}

void QueueTest::frameQueue_reportsGapOnce_andGoesOnAtKey_data() {
    QTest::addColumn<QVector<int>>("numbers");  // every tenth is a key frame
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("read");
    QTest::addColumn<int>("lost");
    QVector<int> many;
    for (int i = 0; i < 135; ++i)
        many += i;
    QTest::newRow("starts anywhere") << QVector<int>{7, 8} << 10 << QByteArray("7 8") << 0;
    QTest::newRow("gap") << QVector<int>{1, 5, 6} << 10 << QByteArray("1 gap2 5 6") << 3;
    QTest::newRow("wraps") << QVector<int>{-2, -1, 0, 2} << 10
                           << QByteArray("4294967294 4294967295 0 gap1 2") << 1;
    QTest::newRow("backwards") << QVector<int>{5, 5, 6, 3} << 10 << QByteArray("5 gap6 5 6 gap7 3")
                               << 0;
    QTest::newRow("too many") << many << 10
                              << QByteArray(
                                     "120 121 122 123 124 125 126 127 128 "
                                     "129 130 131 132 133 134")
                              << 0;
    QTest::newRow("too many, not at a key")
        << many.mid(1) << 10 << QByteArray("130 131 132 133 134") << 0;
    QTest::newRow("too large") << many.mid(0, 22) << 262144 << QByteArray("20 21") << 0;
}

void QueueTest::frameQueue_reportsGapOnce_andGoesOnAtKey() {
    QFETCH(QVector<int>, numbers);
    QFETCH(int, size);
    QFETCH(int, lost);
    FrameQueue queue(FrameQueue::Kind::Video);
    for (const int number : numbers)
        queue.push(received(uint32_t(number), number % 10 == 0, size_t(size)));
    QTEST(readAll(queue), "read");
    QCOMPARE(queue.lost(), uint32_t(lost));
}

void QueueTest::frameQueue_forgetsOldest_whenSoundOverflows() {
    FrameQueue queue(FrameQueue::Kind::Audio);
    queue.push(received(0, false));
    QCOMPARE(readAll(queue), QByteArray("0"));
    for (uint32_t i = 1; i <= 100; ++i)
        queue.push(received(i, false));
    QCOMPARE(queue.size(), 64);
    QVERIFY(readAll(queue).startsWith("gap1 37 38"));
}

void QueueTest::sendCap_settlesBelowPath_data() {
    QTest::addColumn<int>("path");     // kbit/s
    QTest::addColumn<int>("queueMs");  // that the path can hold
    QTest::addColumn<int>("most");     // kbit/s after 10 s
    QTest::addColumn<int>("least");
    QTest::newRow("free") << 100000 << 200 << 32000 << 8000;
    QTest::newRow("4 Mbit/s") << 4000 << 200 << 4200 << 3000;
    QTest::newRow("1 Mbit/s") << 1000 << 200 << 1050 << 750;
    QTest::newRow("1 Mbit/s, deep queue") << 1000 << 2000 << 1050 << 600;
    QTest::newRow("no queue") << 2000 << 0 << 2700 << 1200;
}

// A path with a queue of its own and a sender that always has more to send.
void QueueTest::sendCap_settlesBelowPath() {
    QFETCH(int, path);
    QFETCH(int, queueMs);
    QFETCH(int, most);
    QFETCH(int, least);
    SendCap cap(4'000'000);
    QCOMPARE(cap.bitsPerSecond(), int64_t{8'000'000});
    double waitingMs = 0;
    int64_t total = 0;
    for (int i = 0; i < 80; ++i) {
        const double offered = double(cap.bitsPerSecond()) / 1000 / path;
        const double wouldWaitMs = std::max(0.0, waitingMs + 250 * (offered - 1));
        waitingMs = std::min<double>(wouldWaitMs, queueMs);
        SendCap::Sample sample;
        sample.elapsedMs = 250;
        sample.sentBytes = cap.bitsPerSecond() / 8 / 4;
        sample.sentPackets = sample.sentBytes / 1400;
        sample.lostPackets =
            int64_t(double(sample.sentPackets) * (wouldWaitMs - waitingMs) / (250 * offered));
        sample.roundTripMs = 30 + waitingMs;
        sample.ackedBytes = int64_t(double(sample.sentBytes) * std::min(1.0, 1 / offered));
        sample.isBacklogged = true;
        cap.update(sample);
        if (i >= 40)
            total += cap.bitsPerSecond() / 1000;
    }
    const int mean = int(total / 40);
    QVERIFY2(mean <= most && mean >= least, qPrintable(QString::number(mean)));
}

static const RegisterSuite<QueueTest> kRegisterQueue;

}  // namespace orvelle::test

#include "queue_test.moc"
