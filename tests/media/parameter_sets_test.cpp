#include "media/parameter_sets.h"

#include <QtTest>

#include "support/suites.h"

using orvelle::parameterSets;

namespace {

QByteArray hex(const char* digits) {
    return QByteArray::fromHex(digits);
}

class ParameterSetsTest : public QObject {
    Q_OBJECT
private slots:
    void parameterSets_areFound_data();
    void parameterSets_areFound();
    void scanner_staysInside_whenBytesAreRandom();
};

void ParameterSetsTest::parameterSets_areFound_data() {
    QTest::addColumn<int>("codec");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("expected");

    const int h264 = AV_CODEC_ID_H264, hevc = AV_CODEC_ID_HEVC;
    const QByteArray sps = hex("0000000167420a"), pps = hex("0000000168ce");
    const QByteArray idr = hex("0000000165888840");
    const QByteArray vps5 = hex("00000001400c"), sps5 = hex("000000014201"),
                     pps5 = hex("0000014401");
    QTest::newRow("sets before the picture") << h264 << sps + pps + idr << sps + pps;
    QTest::newRow("3-byte code before the picture") << h264 << sps + pps + idr.mid(1) << sps + pps;
    QTest::newRow("3-byte codes alone")
        << h264 << sps.mid(1) + pps.mid(1) + idr.mid(1) << sps.mid(1) + pps.mid(1);
    QTest::newRow("other units between")
        << h264 << hex("000000010910") + sps + hex("0000010605ff80") + pps + idr << sps + pps;
    QTest::newRow("zeros behind a unit") << h264 << sps + hex("0000") + pps + idr << sps + pps;
    QTest::newRow("sets behind the picture") << h264 << idr + sps + pps << QByteArray();
    QTest::newRow("no PPS") << h264 << sps + idr << QByteArray();
    QTest::newRow("no picture") << h264 << sps + pps << sps + pps;
    QTest::newRow("set too long for a header")
        << h264 << sps + QByteArray(0x10000, 'x') + pps + idr << QByteArray();
    QTest::newRow("HEVC") << hevc
                          << hex("0000000146015000") + vps5 + sps5 + pps5 + hex("000001260188")
                          << vps5 + sps5 + pps5;
    QTest::newRow("HEVC without VPS") << hevc << sps5 + pps5 + hex("000001260188") << QByteArray();
    QTest::newRow("other codec") << int(AV_CODEC_ID_MJPEG) << sps + pps + idr << QByteArray();
    QTest::newRow("start code at the end") << h264 << sps + pps + hex("000001") << sps + pps;
    QTest::newRow("nothing") << h264 << QByteArray() << QByteArray();
}

void ParameterSetsTest::parameterSets_areFound() {
    QFETCH(const int, codec);
    QFETCH(const QByteArray, bytes);
    QFETCH(const QByteArray, expected);
    const auto* data = reinterpret_cast<const uint8_t*>(bytes.constData());
    const std::vector<uint8_t> sets =
        parameterSets(static_cast<AVCodecID>(codec), data, static_cast<size_t>(bytes.size()));
    const QByteArray found(reinterpret_cast<const char*>(sets.data()),
                           static_cast<int>(sets.size()));
    QCOMPARE(found.toHex(), expected.toHex());
}

/// Mostly zeros and ones, so that start codes overlap and touch the end. Exact heap blocks let the
/// address sanitizer see any byte read too far.
void ParameterSetsTest::scanner_staysInside_whenBytesAreRandom() {
    uint32_t seed = 1;
    for (size_t size = 0; size < 400; ++size) {
        std::vector<uint8_t> bytes(size);
        for (uint8_t& byte : bytes) {
            seed = seed * 1664525 + 1013904223;
            byte = seed >> 30 ? static_cast<uint8_t>(seed >> 24 & 1)
                              : static_cast<uint8_t>(seed >> 16);
        }
        orvelle::NalScanner scanner(bytes.data(), size);
        size_t position = 0;
        for (orvelle::NalUnit unit; scanner.next(unit); position = unit.end) {
            QVERIFY(unit.startCode >= position && unit.end <= size);
            QVERIFY(unit.header >= unit.startCode + 3 && unit.header < unit.end);
        }
    }
}

}  // namespace

static const orvelle::test::RegisterSuite<ParameterSetsTest> kRegistered;

#include "parameter_sets_test.moc"
