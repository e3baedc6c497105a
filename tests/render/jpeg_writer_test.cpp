#include "render/jpeg_writer.h"

#include <QImage>
#include <QTemporaryDir>

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
};

const RegisterSuite<JpegWriterTest> registered;

}  // namespace

#include "jpeg_writer_test.moc"
