#include "frames/input_packet.h"
#include "frames/yuv_data.h"
#include "support/suites.h"

namespace {

QByteArray bytesOf(const uint8_t* data, int size) {
    return QByteArray(reinterpret_cast<const char*>(data), size);
}

class RecordsTest : public QObject {
    Q_OBJECT

private slots:
    void planes_keepTheirFullSize_forAnyStride_data() {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("stride");
        QTest::addColumn<int>("halfStride");
        QTest::newRow("packed") << QSize(8, 4) << 8 << 4;
        QTest::newRow("padded") << QSize(8, 4) << 32 << 16;
        QTest::newRow("below the width") << QSize(8, 4) << 5 << 3;
        QTest::newRow("odd, chroma rounded up") << QSize(7, 5) << 7 << 4;
        QTest::newRow("one pixel") << QSize(1, 1) << 1 << 1;
    }

    void planes_keepTheirFullSize_forAnyStride() {
        QFETCH(QSize, size);
        QFETCH(int, stride);
        QFETCH(int, halfStride);
        const QSize half = QSize(size.width() / 2, size.height() / 2);
        QByteArray luma(stride * size.height(), '\0');
        for (int i = 0; i < luma.size(); ++i)
            luma[i] = static_cast<char>(1 + i % 100);
        const QByteArray chroma = luma.left(halfStride * qMax(1, half.height()));
        const auto* y = reinterpret_cast<const uint8_t*>(luma.constData());
        const auto* c = reinterpret_cast<const uint8_t*>(chroma.constData());
        const uint8_t* planes[] = {y, c, c};
        const int strides[] = {stride, halfStride, halfStride};
        const KvYUV420P picture(planes, size.width(), size.height(), strides);
        const auto expect = [](const QByteArray& from, int rowStride, QSize plane, char black) {
            QByteArray bytes;
            for (int row = 0; row < plane.height(); ++row)
                bytes += from.mid(row * rowStride, qMin(rowStride, plane.width()))
                             .leftJustified(plane.width(), black);
            return bytes;
        };
        QCOMPARE(bytesOf(picture.y(), size.width() * size.height()),
                 expect(luma, stride, size, '\0'));
        QCOMPARE(bytesOf(picture.v(), half.width() * half.height()),
                 expect(chroma, halfStride, half, '\x80'));
        planes[2] = nullptr;
        QVERIFY(KvYUV420P(planes, size.width(), size.height(), strides).isNull());
    }

    void packet_isPaddedAndIndependent_whenCopied() {
        const auto original = KvBasePlayerInputPacket::copyOf("abc", 3, true, AV_CODEC_ID_HEVC,
                                                              KvBasePlayerInputPacket::kVideo, 1.5);
        const auto copy = original->deepCopy();
        original->packet()->data[0] = 'x';
        const QByteArray padding(AV_INPUT_BUFFER_PADDING_SIZE, '\0');
        QCOMPARE(bytesOf(copy->packet()->data, 3 + padding.size()), "abc" + padding);
        QVERIFY(copy->isKey() && copy->codecId() == AV_CODEC_ID_HEVC && copy->time() == 1.5);
        for (const int size : {-1, INT_MIN, INT_MAX})
            QVERIFY(!KvBasePlayerInputPacket::copyOf("", size, false, 0, 0, 0.0));
        QCOMPARE(KvBasePlayerInputPacket::copyOf(nullptr, 0, false, 0, 0, 0.0)->packet()->size, 0);
    }
};

const orvelle::test::RegisterSuite<RecordsTest> registered;

}  // namespace

#include "records_test.moc"
