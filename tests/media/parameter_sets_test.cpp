#include "media/parameter_sets.h"

#include <QtTest>

#include "support/suites.h"

class ParameterSetsTest : public QObject {
    Q_OBJECT
private slots:
    void parameterSets_areFound();
};

void ParameterSetsTest::parameterSets_areFound() {
    const auto hex = [](const char* digits) { return QByteArray::fromHex(digits); };
    const auto compare = [](AVCodecID codec, const QByteArray& bytes, const QByteArray& expected) {
        // A block of just this size, so that the address sanitizer sees a byte read too far.
        const std::vector<uint8_t> exact(bytes.begin(), bytes.end());
        const std::vector<uint8_t> sets = orvelle::parameterSets(codec, exact.data(), exact.size());
        QCOMPARE(sets, std::vector<uint8_t>(expected.begin(), expected.end()));
    };
    const QByteArray sps = hex("0000000167420a"), pps = hex("0000000168ce"), both = sps + pps;
    const QByteArray idr = hex("0000000165888840"), short3 = sps.mid(1) + pps.mid(1);
    compare(AV_CODEC_ID_H264, both + idr, both);
    compare(AV_CODEC_ID_H264, both + idr.mid(1), both);
    compare(AV_CODEC_ID_H264, short3 + idr.mid(1), short3);
    compare(AV_CODEC_ID_H264, hex("000000010910") + sps + hex("00000106ff80") + pps, both);
    compare(AV_CODEC_ID_H264, sps + hex("0000") + pps + idr, both);
    compare(AV_CODEC_ID_H264, both + hex("000001"), both);
    compare(AV_CODEC_ID_H264, idr + both, {});
    compare(AV_CODEC_ID_H264, sps + idr, {});
    compare(AV_CODEC_ID_H264, sps + QByteArray(0x10000, 'x') + pps, {});
    compare(AV_CODEC_ID_H264, {}, {});
    compare(AV_CODEC_ID_MJPEG, both + idr, {});

    const QByteArray vps = hex("00000001400c"), others = hex("0000000142010000014401");
    const QByteArray sei = hex("0000000146015000"), hevcIdr = hex("000001260188");
    compare(AV_CODEC_ID_HEVC, sei + vps + others + hevcIdr, vps + others);
    compare(AV_CODEC_ID_HEVC, others + hevcIdr, {});
}

static const orvelle::test::RegisterSuite<ParameterSetsTest> kRegistered;

#include "parameter_sets_test.moc"
