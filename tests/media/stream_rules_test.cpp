#include <algorithm>

#include "frames/parameter_sets.h"
#include "media/player/pacing.h"
#include "media/stages/byte_rate.h"
#include "media/stages/sequence_gate.h"
#include "support/suites.h"

using namespace orvelle;

namespace {

constexpr int64_t kMs = 1000;
constexpr int64_t kFrameMs = 66;

/// A picture thread in simulated time: how long each picture waited to be shown, in ms.
/// `arrivalMs` of a picture's index.
template <class ArrivalMs>
QVector<qint64> play(int pictures, double cameraMsPerMs, ArrivalMs arrivalMs) {
    Pacing pacing(0);
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

/// From a block of just this size, so that the address sanitizer sees a byte read too far.
QByteArray setsIn(AVCodecID codec, const QByteArray& bytes) {
    const std::vector<uint8_t> exact(bytes.begin(), bytes.end());
    const std::vector<uint8_t> sets = parameterSets(codec, exact.data(), exact.size());
    return {reinterpret_cast<const char*>(sets.data()), static_cast<int>(sets.size())};
}

}  // namespace

class StreamRulesTest : public QObject {
    Q_OBJECT
private slots:
    void sequenceGate_dropsUntilKey_afterGap() {
        // Each frame, half a second apart: its number, 'k' or 'd' for key or delta, '+' or '-' for
        // taken or dropped; "lost" is a loss reported by the link.
        for (const char* frames :
             {"253k+ 254d+ 255d+ 0d+ 1d+", "1k+ 2d+ 3d+ 5d- 6d- 7k+ 8d+", "1k+ 2d+ 3d+ 9k+ 10d+",
              "1k+ 2d+ 7d+ 8d+ 9d+ 11d- 12k+", "1d+ 5d+ 9d+ 20d+ 21d+ 22d+ 30d-", "1k+ 2d+ 3d+ 3d-",
              "1k+ 2d+ 3d+ lost 4d- 5k+ 6d+",
              "1k+ 2d+ 3d+ 5d- 6d- 7d- 9d- 10d- 11d- 12d+ 13d+ 15d-",
              "1k+ 2d+ 3d+ lost 4d- 5d- lost 6d- 7d- 8d- 9d- 10d+ lost 11d- 12k+"}) {
            SequenceGate gate;
            double timeSec = 7.0;
            for (const QByteArray& frame : QByteArray(frames).split(' ')) {
                if (frame == "lost") {
                    gate.noteLoss();
                    continue;
                }
                const auto number = static_cast<uint8_t>(frame.left(frame.size() - 2).toInt());
                const bool isTaken = gate.accepts(number, frame.contains('k'), timeSec += 0.5);
                QVERIFY2(isTaken == frame.endsWith('+'), frames);
            }
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

    void holdUntil_followsTheStamps() {
        const struct {
            std::vector<double> stampsSec;
            std::vector<int> shownMs, heldUntilMs;  // -1: not held
        } rows[] = {
            {{5, 5.1}, {0, 10}, {-1, 100}},                              // early
            {{5, 5.1, 5.2}, {0, 150, 160}, {-1, -1, 200}},               // late
            {{5, 5.5, 5.4}, {0, 1, 500}, {-1, 500, -1}},                 // a step back
            {{50, 50.1, 9, 9.1}, {0, 9, 100, 150}, {-1, 100, -1, 200}},  // a jump back
            {{5, 5.1, 90, 90.1}, {0, 9, 100, 150}, {-1, 100, -1, 200}},  // a jump ahead
            {{0, 0.1, 0.2}, {0, 0, 0}, {-1, -1, 200}},                   // from 0 on
        };
        for (const auto& row : rows) {
            Pacing pacing(0);
            for (size_t i = 0; i < row.stampsSec.size(); ++i) {
                const auto heldUs = pacing.holdUntil(row.stampsSec[i], row.shownMs[i] * kMs);
                QCOMPARE(heldUs ? qRound(*heldUs / 1e3) : -1, row.heldUntilMs[i]);
            }
        }
    }

    void delay_staysBounded_whenLiveClocksDiffer() {
        // `burst` pictures come at once, then one a frame time, every fourth 20 ms late. Of half an
        // hour the first minute may catch up.
        for (const auto& [cameraMsPerMs, burst] :
             {std::pair(0.999, 0), std::pair(1.001, 0), std::pair(1.02, 0), std::pair(1.0, 15)}) {
            const auto arrivalMs = [burst = burst](int i) {
                return std::max<int64_t>(0, i - burst) * kFrameMs + (i % 4 == 3 ? 20 : 0);
            };
            const QVector<qint64> waitsMs = play(27000, cameraMsPerMs, arrivalMs);
            QVERIFY(*std::max_element(waitsMs.begin() + 1000, waitsMs.end()) <= kFrameMs);
        }
    }

    void parameterSets_areFound() {
        const auto hex = [](const char* digits) { return QByteArray::fromHex(digits); };
        const QByteArray sps = hex("0000000167420a"), pps = hex("0000000168ce"), both = sps + pps;
        const QByteArray idr = hex("0000000165888840"), short3 = sps.mid(1) + pps.mid(1);
        const QByteArray vps = hex("00000001400c"), others = hex("0000000142010000014401");
        const QByteArray sei = hex("0000000146015000"), hevcIdr = hex("000001260188");
        const AVCodecID h264 = AV_CODEC_ID_H264, hevc = AV_CODEC_ID_HEVC;
        const QByteArrayList found{both + idr, both + idr.mid(1), both + hex("000001"),
                                   hex("000000010910") + sps + hex("00000106ff80") + pps,
                                   sps + hex("0000") + pps + idr};
        for (const QByteArray& bytes : found)
            QCOMPARE(setsIn(h264, bytes), both);
        QCOMPARE(setsIn(h264, short3 + idr.mid(1)), short3);
        QCOMPARE(setsIn(hevc, sei + vps + others + hevcIdr), vps + others);
        const QByteArrayList missing{
            idr + both, sps + idr, {}, sps + QByteArray(0x10000, 'x') + pps};
        for (const QByteArray& bytes : missing)
            QCOMPARE(setsIn(h264, bytes), QByteArray());
        QCOMPARE(setsIn(hevc, others + hevcIdr), QByteArray());
        QCOMPARE(setsIn(AV_CODEC_ID_MJPEG, both + idr), QByteArray());
    }
};

static const test::RegisterSuite<StreamRulesTest> kRegistered;

#include "stream_rules_test.moc"
