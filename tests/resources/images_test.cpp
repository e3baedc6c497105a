#include <QDirIterator>
#include <QImage>
#include <QImageReader>
#include <QRegularExpression>

#include "support/suites.h"

namespace {

struct Family {
    const char* names;   ///< of buttons, with blanks between
    const char* states;  ///< every button has all of these; "-" is the bare name
};

constexpr Family kFamilies[] = {
    {"minimized maximized home_close close save add group lan play suspend voice voiceoff setting",
     "normal hover"},
    {"helplist allcamera sd shutdown video capture platform fullscreen cancel_fullscreen",
     "normal hover press"},
    {"switchlive calendar", "normal hover pressed"},
    {"cleanup", "normal hover disable"},
    {"unbind", "normal hover"},
    {"layout1x1 layout2x2 layout3x3 layout4x4 layout6 layout13 group_edit remove select",
     "normal pressed"},
    {"group_camera input search fhd hd vga", "normal"},
    {"play pause increase reduce", "- over"},
    {"calendar_prev calendar_next", "- pressed"},
    {"logo_white list_drop_down drop_down back_dark selected unselected prev next loading "
     "camera_cartoon home_bg home_guide_cn home_guide_en device_bg",
     "-"},
};

// These cover their whole area.
const QStringList kPictures = {QStringLiteral("home_bg"), QStringLiteral("home_guide_cn"),
                               QStringLiteral("home_guide_en"), QStringLiteral("device_bg")};

QImage load(const QString& name, const char* density) {
    return QImage(QStringLiteral(":/resources/") + name + QLatin1String(density) +
                  QStringLiteral(".png"));
}

constexpr int kLeastAlpha = 8;  // rounded curves leave traces that nobody can see

// The smallest rectangle that holds all that is drawn.
QRect inked(const QImage& image) {
    QRect area;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) >= kLeastAlpha)
                area |= QRect(x, y, 1, 1);
    return area;
}

}  // namespace

class ImagesTest : public QObject {
    Q_OBJECT
private slots:
    void image_isWholeInBothDensities_data();
    void image_isWholeInBothDensities();
    void everyName_isBaked_whenCodeUsesIt();
    void loadingGif_turnsOnClearGround();
};

void ImagesTest::image_isWholeInBothDensities_data() {
    QTest::addColumn<QString>("name");
    for (const Family& family : kFamilies)
        for (const QString& button : QString::fromLatin1(family.names).split(QLatin1Char(' ')))
            for (const QString& state :
                 QString::fromLatin1(family.states).split(QLatin1Char(' '))) {
                const QString tail =
                    state == QLatin1String("-") ? QString() : QLatin1Char('_') + state;
                QTest::newRow(qPrintable(button + tail)) << QString(button + tail);
            }
}

void ImagesTest::image_isWholeInBothDensities() {
    QFETCH(QString, name);
    const QImage plain = load(name, "");
    const QImage dense = load(name, "@2x");
    QVERIFY(!plain.isNull());
    QCOMPARE(dense.size(), plain.size() * 2);
    for (const QImage& image : {plain, dense}) {
        const QRect area = inked(image);
        if (kPictures.contains(name))
            QCOMPARE(area, image.rect());
        else
            QVERIFY2(!area.isEmpty() && image.rect().adjusted(1, 1, -1, -1).contains(area),
                     "blank, or cut at the edge");
    }
}

void ImagesTest::everyName_isBaked_whenCodeUsesIt() {
    const QRegularExpression use(QStringLiteral(":/resources/[a-z0-9_]+\\.(png|gif)"));
    QDirIterator files(QStringLiteral(ORVELLE_SOURCE_DIR),
                       {QStringLiteral("*.cpp"), QStringLiteral("*.h")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        auto uses = use.globalMatch(QString::fromUtf8(file.readAll()));
        while (uses.hasNext()) {
            const QString name = uses.next().captured();
            QVERIFY2(QFile::exists(name), qPrintable(file.fileName() + QLatin1Char(' ') + name));
        }
    }
}

void ImagesTest::loadingGif_turnsOnClearGround() {
    for (const QString& name : {QStringLiteral(":/resources/loading.gif"),
                                QStringLiteral(":/resources/loading@2x.gif")}) {
        QImageReader reader(name);
        QCOMPARE(reader.imageCount(), 10);
        QCOMPARE(reader.loopCount(), -1);
        QImage last;
        for (int i = 0; i < 10; ++i) {
            const QImage frame = reader.read();
            QVERIFY(!frame.isNull() && frame != last);
            QCOMPARE(qAlpha(frame.pixel(0, 0)), 0);
            QCOMPARE(reader.nextImageDelay(), 100);
            last = frame;
        }
    }
}

static const orvelle::test::RegisterSuite<ImagesTest> kImagesTest;
#include "images_test.moc"
