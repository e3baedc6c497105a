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

/// Whether the view shows a colour at fractions of its size.
bool shows(KvVideoView& view, double x, double y, const QColor& colour) {
    const QImage image = view.grabFramebuffer();
    return isNear(image.pixelColor(int(x * image.width()), int(y * image.height())), colour);
}

class VideoViewTest : public QObject {
    Q_OBJECT

private slots:
    void picture_isFittedInRightColours() {
        using Row = std::tuple<QSize, QSize, QPointF>;
        for (const auto& [size, window, scale] :
             {Row{{1920, 1080}, {400, 400}, {1.0, 0.5625}},
              Row{{640, 480}, {1000, 300}, {0.4, 1.0}}, Row{{64, 32}, {320, 160}, {1.0, 1.0}},
              Row{{66, 66}, {320, 160}, {0.5, 1.0}},  // rows that are no multiple of four
              Row{{67, 67}, {300, 600}, {1.0, 0.5}}}) {
            KvVideoView view;
            showAt(view, window);
            view.showFrame(twoTone(size, kRed, kBlue, 5).release());
            const double left = 0.5 - scale.x() * 0.49;
            const double top = 0.5 - scale.y() * 0.49;
            for (const double x : {left, 0.5, 1.0 - left}) {
                QVERIFY(shows(view, x, top, colorOf(kRed, 0)));
                QVERIFY(shows(view, x, 1.0 - top, colorOf(kBlue, 0)));
            }
            QPointF painted;
            view.pictureScale(&painted.rx(), &painted.ry());
            QCOMPARE(painted, scale);
            QVERIFY(scale.x() == scale.y() ||
                    shows(view, qMax(0.0, left - 0.03), qMax(0.0, top - 0.03), Qt::black));
        }
    }

    void picture_isTheLatest_whenItsSizeOrWindowChanges() {
        auto owned = std::make_unique<QWidget>();
        QWidget other;
        auto* view = new KvVideoView(owned.get());
        showAt(*owned, QSize(200, 200));
        showAt(other, QSize(200, 200));
        const auto expect = [view](KvYUV420P* frame, const QColor& colour) {
            view->showFrame(frame);
            QVERIFY(shows(*view, 0.5, 0.4, colour) && shows(*view, 0.5, 0.6, colour));
        };
        const auto show = [&](QSize size, Yuv yuv) {
            expect(twoTone(size, yuv, yuv).release(), colorOf(yuv, 0));
        };
        show({64, 64}, kRed);
        show({64, 64}, kBlue);
        expect(nullptr, Qt::black);
        show({32, 64}, kRed);
        expect(new KvYUV420P(nullptr, 8, 8, nullptr), Qt::black);
        show({64, 64}, kBlue);
        view->setParent(&other);
        view->show();
        owned.reset();
        QVERIFY(shows(*view, 0.5, 0.5, colorOf(kBlue, 0)));
        show({64, 64}, kRed);
        view->clear();
        QVERIFY(shows(*view, 0.5, 0.5, Qt::black));
    }

    void lastFrame_isPainted_whenWorkersOutrunTheScreen() {
        KvVideoView views[3];
        std::vector<std::thread> workers;
        for (KvVideoView& view : views) {
            showAt(view, QSize(100, 100));
            workers.emplace_back([&view] {
                for (const int width : {64, 32, 16})
                    for (int i = 0; i < 100; ++i)
                        view.showFrame(twoTone({width, 64}, kRed, kBlue).release());
            });
        }
        for (std::thread& worker : workers)
            worker.join();
        double x = 0.0;
        for (KvVideoView& view : views)
            QTRY_VERIFY((view.pictureScale(&x, nullptr), x) == 0.25);
    }

    void snapshot_carriesTheClock_andFailsWithoutAPicture() {
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("shot.jpg"));
        KvVideoView view;
        QVERIFY(!view.snapshot(path) && !QFile::exists(path));
        std::vector<uint8_t> luma(640 * 360, 90);
        orvelle::drawPictureClock(luma.data(), 640, 640, 360, 123456789);
        const uint8_t* planes[] = {luma.data(), luma.data(), luma.data()};
        view.setYUV(planes, 640, 360, nullptr);
        QVERIFY(view.snapshot(path));
        showAt(view, QSize(320, 180));
        for (const QImage& image : {QImage(path), view.grabFramebuffer()}) {
            const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
            const auto value = orvelle::readPictureClock(
                {rgb.constBits(), rgb.width(), rgb.height(), rgb.bytesPerLine(), 4});
            QCOMPARE(value, 123456789u);
        }
    }
};

const RegisterSuite<VideoViewTest> registered;

}  // namespace

#include "video_view_test.moc"
