#include "media/pacing.h"
#include "support/suites.h"

#include <algorithm>

namespace {

constexpr int64_t kMs = 1000;
constexpr int64_t kFrameMs = 66;

/// A picture thread in simulated time: how long each picture waited to be shown, in ms.
/// `arrivalMs` of a picture's index.
template <class ArrivalMs>
QVector<qint64> play(bool isLive, int pictures, double cameraMsPerMs, ArrivalMs arrivalMs) {
    orvelle::Pacing pacing(isLive, 0);
    QVector<qint64> waitsMs;
    int64_t freeUs = 0;
    for (int i = 0; i < pictures; ++i) {
        const int64_t arrivedUs = arrivalMs(i) * kMs;
        const int64_t shownUs = std::max(arrivedUs, freeUs);
        const double stampSec = 100.0 + static_cast<double>(i * kFrameMs) * cameraMsPerMs / 1000.0;
        freeUs = std::max(shownUs, pacing.holdUntil(stampSec, shownUs).value_or(0));
        waitsMs.append((shownUs - arrivedUs) / kMs);
    }
    return waitsMs;
}

}  // namespace

class PacingTest : public QObject {
    Q_OBJECT
private slots:
    void holdUntil_followsTheStamps_data() {
        QTest::addColumn<QVector<double>>("stampsSec");
        QTest::addColumn<QVector<int>>("shownMs");
        QTest::addColumn<QVector<int>>("heldUntilMs");  // -1: not held
        using Sec = QVector<double>;
        using Ms = QVector<int>;
        QTest::newRow("early") << Sec{5, 5.1} << Ms{0, 10} << Ms{-1, 100};
        QTest::newRow("late") << Sec{5, 5.1, 5.2} << Ms{0, 150, 160} << Ms{-1, -1, 200};
        QTest::newRow("step back") << Sec{5, 5.5, 5.4} << Ms{0, 1, 500} << Ms{-1, 500, -1};
        QTest::newRow("jump back")
            << Sec{50, 50.1, 9, 9.1} << Ms{0, 9, 100, 150} << Ms{-1, 100, -1, 200};
        QTest::newRow("jump ahead")
            << Sec{5, 5.1, 90, 90.1} << Ms{0, 9, 100, 150} << Ms{-1, 100, -1, 200};
        QTest::newRow("stamps start at 0") << Sec{0, 0.1, 0.2} << Ms{0, 0, 0} << Ms{-1, -1, 200};
    }
    void holdUntil_followsTheStamps() {
        QFETCH(QVector<double>, stampsSec);
        QFETCH(QVector<int>, shownMs);
        QFETCH(QVector<int>, heldUntilMs);
        orvelle::Pacing pacing(true, 0);
        for (int i = 0; i < stampsSec.size(); ++i) {
            const int64_t heldUs = pacing.holdUntil(stampsSec[i], shownMs[i] * kMs).value_or(-kMs);
            QCOMPARE(qRound(static_cast<double>(heldUs) / kMs), heldUntilMs[i]);
        }
    }

    void delay_staysBounded_whenLiveClocksDiffer_data() {
        QTest::addColumn<double>("cameraMsPerMs");
        QTest::addColumn<int>("burst");  // pictures that come at once, then one a frame time
        QTest::newRow("camera slow") << 0.999 << 0;
        QTest::newRow("camera fast") << 1.001 << 0;
        QTest::newRow("camera very fast") << 1.02 << 0;
        QTest::newRow("backlog at the start") << 1.0 << 15;
    }
    void delay_staysBounded_whenLiveClocksDiffer() {
        QFETCH(double, cameraMsPerMs);
        QFETCH(int, burst);
        // Half an hour, every fourth picture 20 ms late; the first minute may catch up.
        const QVector<qint64> waitsMs = play(true, 27000, cameraMsPerMs, [&](int i) {
            return std::max<int64_t>(0, i - burst) * kFrameMs + (i % 4 == 3 ? 20 : 0);
        });
        QVERIFY(*std::max_element(waitsMs.begin() + 1000, waitsMs.end()) <= kFrameMs);
    }

    void recording_playsAtItsOwnPace_whenAllOfItIsThereAtOnce() {
        QCOMPARE(play(false, 1500, 1.0, [](int) { return 0; }).last(), 1498 * kFrameMs);
    }
};

static const orvelle::test::RegisterSuite<PacingTest> kRegistered;

#include "pacing_test.moc"
