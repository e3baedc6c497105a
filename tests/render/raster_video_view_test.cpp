#include "render/raster_video_view.h"

#include <QTemporaryDir>

#include <cmath>
#include <thread>

#include "render/drawing.h"
#include "render/test_pictures.h"
#include "render/video_view.h"
#include "support/suites.h"

using namespace orvelle;

namespace {

/// Every level of luma and chroma, changing slowly, so that filters of different kinds agree.
FramePtr rainbow(const QSize& size) {
    FramePtr frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = size.width();
    frame->height = size.height();
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        return nullptr;
    const auto fill = [&frame](int plane, int width, int height, auto level) {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                frame->data[plane][y * frame->linesize[plane] + x] =
                    static_cast<uint8_t>(level((x + 0.5) / width, (y + 0.5) / height));
    };
    const int halfWidth = (size.width() + 1) / 2;
    const int halfHeight = (size.height() + 1) / 2;
    fill(0, size.width(), size.height(), [](double x, double y) { return 255 * x * (1 - y / 2); });
    fill(1, halfWidth, halfHeight, [](double x, double y) { return 40 + 170 * y * (1 - x / 3); });
    fill(2, halfWidth, halfHeight, [](double x, double y) { return 30 + 180 * (1 - y) * x; });
    return frame;
}

/// One dark and one light column after the other.
FramePtr stripes(const QSize& size) {
    FramePtr frame = rainbow(size);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            frame->data[0][y * frame->linesize[0] + x] = x % 2 ? 200 : 20;
    for (const int plane : {1, 2})
        std::fill_n(frame->data[plane], frame->linesize[plane] * (size.height() / 2), 128);
    return frame;
}

void showAt(QWidget& window, const QSize& size) {
    window.resize(size);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTRY_COMPARE(window.size(), size);
}

struct Difference {
    int largest = 0;
    double mean = 0.0;
};

Difference difference(const QImage& one, const QImage& other) {
    Difference found;
    double sum = 0.0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QColor a = one.pixelColor(x, y);
            const QColor b = other.pixelColor(x, y);
            const int worst =
                std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                          std::abs(a.blue() - b.blue())});
            found.largest = std::max(found.largest, worst);
            sum += worst;
        }
    }
    found.mean = sum / (one.width() * one.height());
    return found;
}

class RasterVideoViewTest : public QObject {
    Q_OBJECT

private slots:
    void picture_isThatOfOpenGl() {
        struct Row {
            QSize picture;
            QSize view;
            AVColorSpace space = AVCOL_SPC_UNSPECIFIED;
            AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
        };
        for (const Row& row :
             {Row{{640, 360}, {206, 160}}, Row{{640, 360}, {205, 117}}, Row{{640, 360}, {640, 360}},
              Row{{320, 180}, {801, 603}}, Row{{320, 240}, {500, 201}}, Row{{321, 241}, {160, 333}},
              Row{{1920, 1080}, {400, 400}}, Row{{640, 360}, {206, 160}, AVCOL_SPC_BT709},
              Row{{640, 360}, {206, 160}, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG}}) {
            const FramePtr picture = rainbow(row.picture);
            QVERIFY(picture);
            picture->colorspace = row.space;
            picture->color_range = row.range;
            KvVideoView gl;
            RasterVideoView raster;
            QPointF scales[2];
            for (VideoSurface* view :
                 {static_cast<VideoSurface*>(&gl), static_cast<VideoSurface*>(&raster)}) {
                showAt(view->widget(), row.view);
                QCOMPARE(view->showPicture(*picture), 0);
            }
            const QImage expected = gl.grabView();
            const QImage image = raster.grabView();
            QCOMPARE(image.size(), expected.size());
            const Difference found = difference(image, expected);
            // Mipmaps of a software renderer lose a little at each level.
            const bool isShrunk = row.view.width() < row.picture.width() / 2;
            QVERIFY2(found.largest <= (isShrunk ? 14 : 10) && found.mean < (isShrunk ? 4.0 : 2.5),
                     qPrintable(QStringLiteral("%1x%2 in %3x%4: %5 at most, %6 in the mean")
                                    .arg(row.picture.width())
                                    .arg(row.picture.height())
                                    .arg(row.view.width())
                                    .arg(row.view.height())
                                    .arg(found.largest)
                                    .arg(found.mean)));
            gl.pictureScale(&scales[0].rx(), &scales[0].ry());
            raster.pictureScale(&scales[1].rx(), &scales[1].ry());
            QCOMPARE(scales[1], scales[0]);
            // What the window got is what is grabbed.
            QCOMPARE(raster.grab().toImage().convertToFormat(QImage::Format_RGB32), image);
        }
    }

    void stripes_becomeOneGrey_whenShrunk() {
        KvVideoView gl;
        RasterVideoView raster;
        for (VideoSurface* view :
             {static_cast<VideoSurface*>(&gl), static_cast<VideoSurface*>(&raster)}) {
            showAt(view->widget(), {213, 120});
            view->showPicture(*stripes({640, 360}));
            const QImage image = view->grabView();
            for (int x = 1; x < image.width() - 1; ++x)
                QVERIFY(qAbs(qRed(image.pixel(x, 60)) - qRound(110 * 1.164)) < 45);
            // Another picture of that size, then as sharp as ever once it is large.
            view->showPicture(*rainbow({640, 360}));
            QVERIFY(qGray(view->grabView().pixel(200, 10)) > 150);
            view->showPicture(*stripes({640, 360}));
            showAt(view->widget(), {640, 360});
            const QImage large = view->grabView();
            QVERIFY(qAbs(qRed(large.pixel(100, 60)) - qRed(large.pixel(101, 60))) > 150);
        }
    }

    void zoomedPicture_isThatOfOpenGl() {
        struct Row {
            QSize picture;
            QSize view;
            QPointF at;
            double factor;
        };
        for (const Row& row : {Row{{640, 360}, {401, 300}, {0.3, 0.4}, 2.0},
                               Row{{640, 360}, {200, 160}, {0.9, 0.5}, 1.3},
                               Row{{321, 241}, {300, 120}, {0.5, 0.9}, 4.0},
                               Row{{320, 180}, {320, 180}, {0.0, 0.0}, 8.0}}) {
            KvVideoView gl;
            RasterVideoView raster;
            QPointF scales[2];
            for (VideoSurface* view :
                 {static_cast<VideoSurface*>(&gl), static_cast<VideoSurface*>(&raster)}) {
                showAt(view->widget(), row.view);
                QCOMPARE(view->showPicture(*rainbow(row.picture)), 0);
                PictureZoom zoom;
                zoom.zoomAt(row.factor, row.at, view->fit());
                view->setZoom(zoom);
                view->grabView();
            }
            const Difference still = difference(raster.grabView(), gl.grabView());
            QVERIFY2(still.mean < 3.0 && still.largest < 16,
                     qPrintable(QStringLiteral("%1, %2").arg(still.mean).arg(still.largest)));
            gl.pictureScale(&scales[0].rx(), &scales[0].ry());
            raster.pictureScale(&scales[1].rx(), &scales[1].ry());
            QVERIFY((scales[0] - scales[1]).manhattanLength() < 1e-9);
            // What comes now is magnified, too, and nothing is any more after the reset.
            for (VideoSurface* view :
                 {static_cast<VideoSurface*>(&gl), static_cast<VideoSurface*>(&raster)})
                view->showPicture(*rainbow(row.picture));
            QVERIFY(difference(raster.grabView(), gl.grabView()).mean < 3.0);
            const QImage zoomed = raster.grabView();
            raster.setZoom({});
            QVERIFY(difference(raster.grabView(), zoomed).mean > 10.0);
        }
    }

    void lastPicture_isThere_whenTheViewWasHiddenOrResized() {
        QWidget window;
        RasterVideoView view(&window);
        view.resize(200, 100);
        showAt(window, {200, 100});
        const auto shows = [&view](int level) {
            const QImage image = view.grab().toImage();
            return qAbs(qRed(image.pixel(image.width() / 2, image.height() / 2)) - level) <= 3;
        };
        const auto grey = [](int luma) {
            FramePtr frame = rainbow({64, 32});
            std::fill_n(frame->data[0], frame->linesize[0] * 32, static_cast<uint8_t>(luma));
            for (const int plane : {1, 2})
                std::fill_n(frame->data[plane], frame->linesize[plane] * 16, 128);
            return frame;
        };
        view.showPicture(*grey(100));
        QVERIFY(shows(116));
        view.hide();
        QVERIFY(!view.isSeen());
        view.showPicture(*grey(50));
        view.show();
        QVERIFY(view.isSeen() && shows(58));
        view.resize(120, 90);
        QVERIFY(shows(58));
        window.hide();
        QVERIFY(!view.isSeen());
        view.showNothing();
        window.show();
        QVERIFY(shows(0));
        window.setWindowState(Qt::WindowMinimized);
        QVERIFY(!view.isSeen());
        view.showPicture(*grey(100));
        window.setWindowState(Qt::WindowNoState);
        QVERIFY(view.isSeen() && shows(116));
        // Of another size, while the old one is still in the window.
        view.showPicture(*grey(100));
        view.showPicture(*rainbow({32, 64}));
        double x = 0.0;
        view.grab();
        view.pictureScale(&x, nullptr);
        QCOMPARE(x, 45.0 / 120.0);
        QCOMPARE(view.showPicture(*FramePtr(av_frame_alloc())), -1);
    }

    void pictures_areTakenFromAWorker_whileTheViewIsResized() {
        RasterVideoView view;
        showAt(view, {300, 200});
        std::atomic<bool> isOver{false};
        std::thread worker([&] {
            do {
                for (const int width : {64, 320})
                    view.showPicture(*rainbow({width, 64}));
            } while (!isOver);
        });
        for (int i = 0; i < 60; ++i) {
            view.resize(200 + i, 100 + i % 7);
            view.setVisible(i % 5 != 0);
            QCoreApplication::processEvents();
            QVERIFY(!view.grabView().isNull());
        }
        isOver = true;
        worker.join();
        view.show();
        double y = 0.0;
        view.grab();
        view.pictureScale(nullptr, &y);
        QVERIFY(y < 1.0);
    }

    void snapshot_hasTheSizeOfThePicture_notOfTheView() {
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("shot.jpg"));
        RasterVideoView view;
        QVERIFY(!view.snapshot(path));
        for (const auto& [picture, shot] : {std::pair{QSize{640, 360}, QSize{640, 360}},
                                            std::pair{QSize{321, 241}, QSize{320, 240}}}) {
            view.showPicture(*rainbow(picture));
            QVERIFY(view.snapshot(path));
            KvVideoView gl;
            gl.showPicture(*rainbow(picture));
            const QString other = dir.filePath(QStringLiteral("other.jpg"));
            QVERIFY(gl.snapshot(other));
            QCOMPARE(QImage(path).size(), shot);
            QVERIFY(difference(QImage(path), QImage(other)).mean < 1.0);
        }
        view.showNothing();
        QVERIFY(!view.snapshot(path));
    }

    void renderer_isTold() {
        for (const char* name : {"llvmpipe (LLVM 15.0.6, 256 bits)", "softpipe", "GDI Generic",
                                 "ANGLE (Microsoft Basic Render Driver Direct3D11 vs_4_0 ps_4_0)",
                                 "Software Rasterizer", "Google SwiftShader"})
            QVERIFY2(isSoftwareRenderer(name), name);
        for (const char* name : {"Mesa Intel(R) UHD Graphics 620 (KBL GT2)", "virgl",
                                 "NVIDIA GeForce GTX 1060/PCIe/SSE2", "AMD Radeon RX 580",
                                 "ANGLE (Intel(R) HD Graphics Direct3D11 vs_5_0 ps_5_0)"})
            QVERIFY2(!isSoftwareRenderer(name), name);
    }
};

const orvelle::test::RegisterSuite<RasterVideoViewTest> registered;

}  // namespace

#include "raster_video_view_test.moc"
