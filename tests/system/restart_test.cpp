#include "device/device.h"
#include "render/video_surface.h"
#include "support/suites.h"
#include "system/camera_set.h"
#include "ui/preview/device_player_view.h"

#include <QImage>
#include <QSignalSpy>
#include <QtTest>

using orvelle::test::CameraSet;

namespace {

constexpr int kCycles = 10;
constexpr int kTimeoutMs = 60000;

bool isBlack(const QImage& picture) {
    for (int y = 0; y < picture.height(); y += 8)
        for (int x = 0; x < picture.width(); x += 8)
            if (qGray(picture.pixel(x, y)) > 32)
                return false;
    return true;
}

/// A watched camera that goes away and comes back.
class RestartTest : public QObject {
    Q_OBJECT
private slots:
    void picture_returns_whenCameraIsKilledAndStarted();
};

}  // namespace

void RestartTest::picture_returns_whenCameraIsKilledAndStarted() {
    CameraSet cameras(QStringLiteral("RESTART1"), 1,
                      {QStringLiteral("--demo"), QStringLiteral("--size"), QStringLiteral("360p")});
    QVERIFY(cameras.connectAll());
    KvDevice* device = cameras.devices().front();
    KvDevicePlayerView tile;
    tile.resize(640, 440);
    tile.show();
    QSignalSpy firstPictures(&tile, &KvDevicePlayerView::hideLoadingSignal);
    tile.setDevice(device);
    orvelle::VideoSurface* const view = tile.findChild<KvDevicePlayerViewUI*>()->videoView();
    QTRY_VERIFY_WITH_TIMEOUT(firstPictures.count() == 1 && !isBlack(view->grabView()), kTimeoutMs);

    for (int cycle = 1; cycle <= kCycles; ++cycle) {
        cameras.process().kill();
        QTRY_VERIFY_WITH_TIMEOUT(!device->isOnline(), kTimeoutMs);
        QVERIFY(!isBlack(view->grabView()));
        QVERIFY(cameras.process().start());
        QTRY_COMPARE_WITH_TIMEOUT(firstPictures.count(), cycle + 1, kTimeoutMs);
    }
}

static orvelle::test::RegisterSuite<RestartTest> s_suite;

#include "restart_test.moc"
