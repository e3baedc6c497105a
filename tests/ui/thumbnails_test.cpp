#include <QDateTime>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>

#include "support/suites.h"
#include "ui/list/thumbnail_loader.h"

using orvelle::EntryThumbnail;
using orvelle::ThumbnailLoader;

namespace {

constexpr int kWidth = 160;
const QColor kRed(200, 30, 30);
const QColor kBlue(30, 30, 200);

QByteArray picture(const QSize& size, const QColor& colour, const char* format = "JPEG") {
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, format);
    return bytes;
}

// The frame header holds height and width, big-endian, five bytes behind its marker.
QByteArray claiming(QByteArray jpeg, const char* heightAndWidth) {
    const int header = jpeg.indexOf("\xff\xc0");
    return jpeg.replace(header + 5, 4, heightAndWidth, 4);
}

bool isLike(const QColor& left, const QColor& right) {
    return qAbs(left.red() - right.red()) < 30 && qAbs(left.green() - right.green()) < 30 &&
           qAbs(left.blue() - right.blue()) < 30;
}

}  // namespace

class ThumbnailsTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        m_directory = std::make_unique<QTemporaryDir>();
        m_loader = std::make_unique<ThumbnailLoader>(kWidth);
        m_placeholder = m_loader->pixmap(QString()).toImage();
        QCOMPARE(m_placeholder.width(), kWidth);
    }

    void file_isShownOrReplaced_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QSize>("shown");  // none: the placeholder
        const QByteArray good = picture({640, 360}, kRed);
        const QSize none;
        QTest::newRow("picture") << good << QSize(160, 90);
        QTest::newRow("narrow") << picture({90, 160}, kRed) << QSize(160, 284);
        QTest::newRow("a line") << picture({2, 4000}, kRed) << QSize(160, 320);
        QTest::newRow("empty") << QByteArray() << none;
        QTest::newRow("no picture") << QByteArray(5000, 'x') << none;
        QTest::newRow("another format") << picture({64, 36}, kRed, "PNG") << none;
        QTest::newRow("torn in its header") << good.left(30) << none;
        QTest::newRow("absurdly wide") << claiming(good, "\x01\x68\xff\xff") << none;
        QTest::newRow("no height") << claiming(good, "\0\0\2\x80") << none;
        QTest::newRow("9 MB") << good + QByteArray(9 << 20, '\0') << none;
    }
    void file_isShownOrReplaced() {
        QFETCH(QByteArray, content);
        QFETCH(QSize, shown);
        const QImage image = load({write("file", content), {}, false});
        if (shown.isEmpty()) {
            QCOMPARE(image, m_placeholder);
        } else {
            QCOMPARE(image.size(), shown);
            QVERIFY(isLike(image.pixelColor(80, 20), kRed));
        }
    }

    void picture_isReadAgain_whenItsFileChanges() {
        const QString path = write("file", picture({320, 180}, kRed));
        QVERIFY(isLike(load({path, {}, false}).pixelColor(9, 9), kRed));
        write("file", picture({320, 180}, kBlue));
        touch(path, 5);
        QVERIFY(isLike(load({path, {}, false}).pixelColor(9, 9), kBlue));
        QVERIFY(QFile::remove(path));
        QCOMPARE(load({path, {}, false}), m_placeholder);
    }

    void groupPicture_followsItsMembers() {
        const QStringList members{write("a", picture({640, 360}, kRed)), this->path("b")};
        const EntryThumbnail group{path("group"), members, false};
        QImage image = load(group);
        QVERIFY(isLike(image.pixelColor(20, 20), kRed));
        QVERIFY(isLike(image.pixelColor(120, 20), Qt::black));
        QVERIFY(!(QFile::permissions(group.path) & QFile::Permissions(0x77)));
        write("b", picture({640, 360}, kBlue));
        touch(members[1], 5);
        image = load(group);
        QVERIFY(isLike(image.pixelColor(120, 20), kBlue));
        QVERIFY(QFile::remove(members[0]));
        touch(group.path, 10);
        QVERIFY(isLike(load(group).pixelColor(20, 20), kRed));
        image = load({group.path, members, true});
        QVERIFY(isLike(image.pixelColor(20, 20), Qt::black));
        QVERIFY(QFile::remove(members[1]));
        QCOMPARE(load({group.path, members, true}), m_placeholder);
    }

    void loader_mayGo_whileItReads() {
        const QString path = write("file", picture({1920, 1080}, kRed));
        constexpr int kGroups = 200;
        for (int i = 0; i < kGroups; ++i)
            m_loader->request({this->path("group%1").arg(i), {path}, true});
        QTRY_VERIFY(QFile::exists(this->path("group%1").arg(0)) ||
                    QFile::exists(this->path("group%1").arg(kGroups - 1)));
        m_loader.reset();
        // What was asked for and had not begun is left.
        int composed = 0;
        for (int i = 0; i < kGroups; ++i)
            composed += QFile::exists(this->path("group%1").arg(i));
        QVERIFY(composed < kGroups);
    }

private:
    QString path(const char* name) const { return m_directory->filePath(QLatin1String(name)); }

    QString write(const char* name, const QByteArray& content) const {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", name);
        return file.fileName();
    }

    // Files written at the same time cannot be told apart by their age.
    static void touch(const QString& path, int seconds) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(seconds),
                                 QFileDevice::FileModificationTime));
    }

    QImage load(const EntryThumbnail& thumbnail) {
        QSignalSpy changed(m_loader.get(), &ThumbnailLoader::changed);
        m_loader->request(thumbnail);
        if (changed.isEmpty() && !changed.wait())
            return {};
        return m_loader->pixmap(thumbnail.path).toImage();
    }

    std::unique_ptr<QTemporaryDir> m_directory;
    std::unique_ptr<ThumbnailLoader> m_loader;
    QImage m_placeholder;
};

static const orvelle::test::RegisterSuite<ThumbnailsTest> kThumbnailsTest;
#include "thumbnails_test.moc"
