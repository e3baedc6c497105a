#include "media/byte_rate.h"
#include "media/sequence_gate.h"
#include "media/stream_stats.h"
#include "support/suites.h"

using namespace orvelle;

class StreamRulesTest : public QObject {
    Q_OBJECT
private slots:
    void sequenceGate_dropsUntilKey_afterGap_data() {
        // Each frame: its number, 'k' or 'd' for key or delta, '+' or '-' for taken or dropped;
        // "lost" is a loss reported by the link.
        QTest::addColumn<QString>("frames");
        QTest::newRow("wrap") << "253k+ 254d+ 255d+ 0d+ 1d+";
        QTest::newRow("gap after the third") << "1k+ 2d+ 3d+ 5d- 6d- 7k+ 8d+";
        QTest::newRow("gap ends at a key frame") << "1k+ 2d+ 3d+ 9k+ 10d+";
        QTest::newRow("gap after the second") << "1k+ 2d+ 7d+ 8d+ 9d+ 11d- 12k+";
        QTest::newRow("only gaps at first") << "1d+ 5d+ 9d+ 20d+ 21d+ 22d+ 30d-";
        QTest::newRow("repeated number") << "1k+ 2d+ 3d+ 3d-";
        QTest::newRow("wrapped gap of 256") << "1k+ 2d+ 3d+ lost 4d- 5k+ 6d+";
    }
    void sequenceGate_dropsUntilKey_afterGap() {
        QFETCH(QString, frames);
        SequenceGate gate;
        for (const QString& frame : frames.split(QLatin1Char(' '))) {
            if (frame == QLatin1String("lost")) {
                gate.noteLoss();
                continue;
            }
            const auto sequence = static_cast<uint8_t>(frame.leftRef(frame.size() - 2).toInt());
            const bool isTaken = gate.accepts(sequence, frame.contains(QLatin1Char('k')));
            QVERIFY2(isTaken == frame.endsWith(QLatin1Char('+')), qPrintable(frame));
        }
    }

    void byteRate_dividesByElapsedTime() {
        ByteRate rate;
        rate.restart(0);
        rate.add(1000);
        rate.update(1'000'000);
        QCOMPARE(rate.bytesPerSecond(1'000'000), 0);
        rate.update(2'000'000);
        QCOMPARE(rate.bytesPerSecond(2'000'000), 250);
        rate.add(3000);
        rate.update(3'500'000);
        QCOMPARE(rate.bytesPerSecond(3'500'000), 125 + 1000);
        QCOMPARE(rate.bytesPerSecond(3'500'000 + ByteRate::kStaleUs + 1), 0);
    }

    void stats_measureDelay_byTimeStamp() {
        StreamStats stats;
        for (int i = 0; i < 300; ++i)
            stats.noteArrival(i / 15.0, i * 1000);
        stats.noteShown(280 / 15.0, 290'000);
        stats.noteShown(298 / 15.0, 299'000);
        stats.noteShown(1.0 / 15.0, 300'000);  // long forgotten
        QCOMPARE(stats.snapshot().delayUs, 1000);
        QCOMPARE(stats.snapshot().maxDelayUs, 10'000);
    }
};

static const orvelle::test::RegisterSuite<StreamRulesTest> kRegistered;

#include "stream_rules_test.moc"
