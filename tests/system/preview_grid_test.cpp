#include "device/device_group.h"
#include "render/video_surface.h"
#include "support/suites.h"
#include "system/camera_set.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/devices_preview.h"
#include "ui/preview/devices_preview_ui.h"
#include "ui/widgets/push_button.h"

#include <QImage>
#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

using orvelle::test::CameraSet;
using orvelle::test::waitUntil;
using Tile = KvDevicePlayerViewUI;

namespace {

constexpr int kCameras = 4;
constexpr int kTimeoutMs = 30000;

/// The grid with real cameras.
class PreviewGridTest : public QObject {
    Q_OBJECT
private slots:
    void grid_playsSwapsAndPauses_withRealCameras();
};

Tile* uiOf(const KvDevicePlayerView* tile) {
    return tile->findChild<Tile*>();
}

bool showsPicture(const KvDevicePlayerView* tile) {
    const QImage picture = uiOf(tile)->videoView()->grabView();
    return qGray(picture.pixel(picture.width() / 2, picture.height() / 2)) > 32;
}

bool showsSpeed(const KvDevicePlayerView* tile) {
    const QList<QLabel*> labels = tile->findChildren<QLabel*>();
    return std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
        return label->isVisible() && label->text().endsWith(QLatin1String("KB/s"));
    });
}

void drag(KvDevicePlayerView* from, KvDevicePlayerView* to) {
    QWidget* video = &uiOf(from)->videoView()->widget();
    const QPoint start = video->rect().center();
    const QPoint end = video->mapFromGlobal(to->mapToGlobal(to->rect().center()));
    const auto send = [video](QEvent::Type type, const QPoint& at) {
        QMouseEvent event(type, at, video->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(video, &event);
    };
    send(QEvent::MouseButtonPress, start);
    send(QEvent::MouseMove, end);
    send(QEvent::MouseButtonRelease, end);
}

}  // namespace

void PreviewGridTest::grid_playsSwapsAndPauses_withRealCameras() {
    CameraSet cameras(QStringLiteral("GRID"), kCameras,
                      {QStringLiteral("--demo"), QStringLiteral("--size"), QStringLiteral("360p")});
    QVERIFY(cameras.connectAll());
    KvDeviceGroup group;
    group.setType(KvDeviceGroup::kGroup);
    for (KvDevice* device : cameras.devices())
        group.setDevices(group.devices() << device);
    group.setLayout(orvelle::kGrid2x2);
    KvDevicesPreview grid;
    grid.resize(800, 640);
    grid.show();
    grid.setGroup(&group);
    const auto& tiles = grid.findChild<KvDevicesPreviewUI*>()->tiles();
    const auto allPlay = [&tiles] {
        return std::all_of(tiles.begin(), tiles.begin() + kCameras,
                           [](const auto* tile) { return showsPicture(tile) && showsSpeed(tile); });
    };
    QVERIFY(waitUntil(kTimeoutMs, allPlay));
    for (int i = 0; i < kCameras; ++i)
        QVERIFY(QFile::exists(group.deviceThumbnailPath(i)));

    QSignalSpy starts(tiles[1], &KvDevicePlayerView::startSignal);
    QSignalSpy seconds(tiles[1], &KvDevicePlayerView::updateSpeedLabelSignal);
    drag(tiles[3], tiles[1]);
    QCOMPARE(tiles[1]->device(), cameras.devices()[3]);
    QCOMPARE(tiles[3]->device(), cameras.devices()[1]);
    // Both go on with what they play, and need not be started again.
    QVERIFY(allPlay());
    QTRY_VERIFY_WITH_TIMEOUT(seconds.count() >= 4, kTimeoutMs);
    QCOMPARE(starts.count(), 0);

    // In a group the sound is off at first.
    KvPushButton* sound = uiOf(tiles[0])->button(Tile::kSound);
    KvPushButton* play = uiOf(tiles[0])->button(Tile::kPlay);
    QCOMPARE(sound->state(), 1);
    play->click();
    QCOMPARE(play->state(), 1);
    sound->click();
    QCOMPARE(sound->state(), 1);
    play->click();
    QVERIFY(waitUntil(kTimeoutMs, [&tiles] { return showsSpeed(tiles[0]); }));
    sound->click();
    QCOMPARE(sound->state(), 0);

    grid.setGroup(nullptr);
    QCoreApplication::processEvents();
    for (const KvDevicePlayerView* tile : tiles)
        QVERIFY(!tile->device() && tile->isHidden());
}

static const orvelle::test::RegisterSuite<PreviewGridTest> kPreviewGridTest;

#include "preview_grid_test.moc"
