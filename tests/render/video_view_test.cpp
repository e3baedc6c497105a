#include "render/video_view.h"

#include <QTemporaryDir>

#include <thread>

#include "frames/picture_clock.h"
#include "render/test_pictures.h"
#include "support/suites.h"

using namespace orvelle::test;

namespace {

constexpr Yuv kRed{90, 100, 200};
constexpr Yuv kBlue{60, 220, 110};

void showAt(QWidget& window, QSize size) {
    window.resize(size);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTRY_COMPARE(window.size(), size);
}

/// The colour at fractions of the view's width and height.
QColor pixelAt(KvVideoView& view, double x, double y) {
    const QImage image = view.grabFramebuffer();
    return image.pixelColor(int(x * image.width()), int(y * image.height()));
}

class VideoViewTest : public QObject {
    Q_OBJECT

private slots:
    void geometry_keepsProportions_data() {
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<QSize>("view");
        QTest::addColumn<QPointF>("scale");
        QTest::newRow("wider") << QSize(1920, 1080) << QSize(400, 400) << QPointF(1.0, 0.5625);
        QTest::newRow("taller") << QSize(640, 480) << QSize(1000, 300) << QPointF(0.4, 1.0);
        QTest::newRow("equal") << QSize(16, 9) << QSize(1600, 900) << QPointF(1.0, 1.0);
        QTest::newRow("huge") << QSize(65536, 32768) << QSize(65536, 65536) << QPointF(1.0, 0.5);
        QTest::newRow("no view") << QSize(16, 9) << QSize(0, 0) << QPointF(1.0, 1.0);
    }

    void geometry_keepsProportions() {
        QFETCH(QSize, picture);
        QFETCH(QSize, view);
        const auto scale =
            orvelle::fitPicture(picture.width(), picture.height(), view.width(), view.height());
        QTEST(QPointF(scale.x, scale.y), "scale");
    }

    void colours_areRight_forAnySizeAndStride_data() {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("padding");
        QTest::newRow("even") << QSize(64, 48) << 0;
        QTest::newRow("padded") << QSize(64, 48) << 32;
        QTest::newRow("width not a multiple of four") << QSize(66, 50) << 0;
        QTest::newRow("odd") << QSize(67, 51) << 3;
        QTest::newRow("larger than the view") << QSize(1280, 720) << 0;
    }

    void colours_areRight_forAnySizeAndStride() {
        QFETCH(QSize, size);
        QFETCH(int, padding);
        KvVideoView view;
        showAt(view, QSize(300, 300));
        view.showFrame(twoTone(size, kRed, kBlue, padding).release());
        for (const double x : {0.02, 0.5, 0.98}) {
            QVERIFY(isNear(pixelAt(view, x, 0.3), viewColor(kRed), 2));
            QVERIFY(isNear(pixelAt(view, x, 0.7), viewColor(kBlue), 2));
            QCOMPARE(pixelAt(view, x, 0.05), QColor(Qt::black));
            QCOMPARE(pixelAt(view, x, 0.95), QColor(Qt::black));
        }
    }

    void picture_isTheLatest_whenSizesChangeOrItMovesToAnotherWindow() {
        auto owned = std::make_unique<QWidget>();
        QWidget other;
        auto* view = new KvVideoView(owned.get());
        view->resize(100, 100);
        showAt(*owned, QSize(200, 200));
        showAt(other, QSize(200, 200));
        const auto expect = [view](KvYUV420P* frame, QColor colour) {
            view->showFrame(frame);
            QVERIFY(isNear(pixelAt(*view, 0.5, 0.5), colour, 2));
            QVERIFY(isNear(pixelAt(*view, 0.5, 0.5), colour, 2));
        };
        expect(twoTone({64, 64}, kRed, kRed).release(), viewColor(kRed));
        expect(twoTone({64, 64}, kBlue, kBlue).release(), viewColor(kBlue));
        expect(nullptr, Qt::black);
        expect(twoTone({32, 64}, kRed, kRed).release(), viewColor(kRed));
        expect(new KvYUV420P(nullptr, 8, 8, nullptr), Qt::black);
        expect(twoTone({64, 64}, kBlue, kBlue).release(), viewColor(kBlue));
        view->setParent(&other);
        view->show();
        owned.reset();
        QVERIFY(isNear(pixelAt(*view, 0.5, 0.5), viewColor(kBlue), 2));
        expect(twoTone({64, 64}, kRed, kRed).release(), viewColor(kRed));
        view->clear();
        expect(nullptr, Qt::black);
    }

    void lastFrame_isPainted_whenWorkersOutrunTheScreen() {
        std::vector<std::unique_ptr<KvVideoView>> views(3);
        std::vector<std::thread> workers;
        for (auto& view : views) {
            view = std::make_unique<KvVideoView>();
            showAt(*view, QSize(100, 100));
            workers.emplace_back([&view] {
                for (int i = 0; i < 300; ++i)
                    view->showFrame(twoTone({64, 64}, kRed, kBlue).release());
                view->showFrame(twoTone({16, 64}, kRed, kBlue).release());
            });
        }
        for (std::thread& worker : workers)
            worker.join();
        double x = 0.0;
        for (auto& view : views)
            QTRY_VERIFY((view->pictureScale(&x, nullptr), x) == 0.25);
    }

    void snapshot_carriesTheClock_andFailsWithoutAPicture() {
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("shot.jpg"));
        KvVideoView view;
        QVERIFY(!view.snapshot(path) && !QFile::exists(path));
        std::vector<uint8_t> luma(640 * 360, 90);
        const std::vector<uint8_t> chroma(320 * 180, 200);
        orvelle::drawPictureClock(luma.data(), 640, 640, 360, 123456789);
        const uint8_t* planes[] = {luma.data(), chroma.data(), chroma.data()};
        view.setYUV(planes, 640, 360, nullptr);
        QVERIFY(view.snapshot(path));
        const auto read = [](const QImage& image) {
            return orvelle::readPictureClock(
                {image.constBits(), image.width(), image.height(), image.bytesPerLine(), 4});
        };
        QCOMPARE(read(QImage(path).convertToFormat(QImage::Format_RGB32)), 123456789u);
        showAt(view, QSize(320, 180));
        QCOMPARE(read(view.grabFramebuffer()), 123456789u);
    }
};

const RegisterSuite<VideoViewTest> registered;

}  // namespace

#include "video_view_test.moc"
