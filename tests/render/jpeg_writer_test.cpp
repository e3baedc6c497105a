#include "render/jpeg_writer.h"

#include <QDateTime>
#include <QImage>
#include <QTemporaryDir>
#include <QtEndian>

#include "render/test_pictures.h"
#include "support/full_disk.h"
#include "support/suites.h"

using namespace orvelle::test;

namespace {

constexpr Yuv kUpper{160, 90, 170};
constexpr Yuv kLower{30, 140, 120};

class JpegWriterTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_path = m_dir.filePath(QStringLiteral("picture.jpg"));

    int write(QSize size) {
        const auto picture = twoTone(size, kUpper, kLower);
        return writeYUV420PJpeg(picture->y(), picture->u(), picture->v(), size.width(),
                                size.height(), m_path);
    }

private slots:
    void file_showsTheRightColours_inOtherViewers() {
        for (const QSize size : {QSize(320, 240), QSize(67, 51)}) {
            QCOMPARE(write(size), 0);
            const QImage image(m_path);
            QCOMPARE(image.size(), QSize(size.width() & ~1, size.height() & ~1));
            const int x = image.width() - 1;
            QVERIFY(isNear(image.pixelColor(x, 4), colorOf(kUpper, 16)));
            QVERIFY(isNear(image.pixelColor(x, image.height() - 2), colorOf(kLower, 16)));
        }
    }

    void oldFile_survives_whenWritingFails() {
        QCOMPARE(write({64, 64}), 0);
        if (FullDisk::isPossible()) {
            const FullDisk disk(512);
            QVERIFY(write({320, 240}) < 0);
        }
        QVERIFY(write({1, 1}) < 0);
        QCOMPARE(QImage(m_path).size(), QSize(64, 64));
        QCOMPARE(QDir(m_dir.path()).entryList(QDir::Files).size(), 1);
        m_path = m_dir.filePath(QStringLiteral("missing/picture.jpg"));
        QVERIFY(write({64, 64}) < 0);
    }

    void moment_isNotedInTheFile_andLeavesThePictureAlone() {
        const QTemporaryDir folder;
        const auto picture = twoTone({64, 48}, kUpper, kLower);
        QByteArray files[2];
        for (int noted = 0; noted < 2; ++noted) {
            const QString path = folder.filePath(QString::number(noted));
            const QDateTime moment(QDate(2024, 2, 29), QTime(23, 58, 57), Qt::OffsetFromUTC,
                                   -(3 * 60 + 30) * 60);
            QCOMPARE(writeYUV420PJpeg(picture->y(), picture->u(), picture->v(), 64, 48, path,
                                      noted ? moment : QDateTime()),
                     0);
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            files[noted] = file.readAll();
        }
        QVERIFY(!files[0].contains("Exif"));
        QCOMPARE(files[1].count(QByteArray("2024:02:29 23:58:57", 20)), 3);
        QVERIFY(files[1].contains(QByteArray("-03:30", 7)));
        // The tag of the original time points at one of them.
        const int tiff = files[1].indexOf("II\x2a");
        const int entry = files[1].indexOf(QByteArray("\x03\x90\x02\0\x14\0\0\0", 8), tiff);
        QVERIFY(tiff > 0 && entry > 0);
        const auto at = qFromLittleEndian<quint32>(files[1].constData() + entry + 8);
        QCOMPARE(files[1].mid(tiff + int(at), 19), QByteArray("2024:02:29 23:58:57"));
        QCOMPARE(QImage::fromData(files[0], "JPG"), QImage::fromData(files[1], "JPG"));
    }
};

const RegisterSuite<JpegWriterTest> registered;

}  // namespace

#include "jpeg_writer_test.moc"
