#include <QAccessible>
#include <QDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QtTest>

#include "fake_device.h"
#include "support/suites.h"
#include "ui/info/device_info_view.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/device_record_view.h"
#include "ui/preview/devices_preview.h"
#include "ui/preview/devices_preview_ui.h"
#include "ui/preview/grid_layout.h"
#include "ui/preview/tile_badge.h"
#include "ui/preview/tutk_device_ptz_view.h"
#include "ui/widgets/picture_notice.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/video_overlay.h"

using orvelle::test::FakeDevice;

namespace {

/// Keeps what the pad would send.
class Pad : public KvTUTKDevicePTZView {
public:
    Pad() {
        resize(160, 130);  // no multiple of three
        show();
    }
    QVector<int> sent;

    void mouse(QEvent::Type type, const QPoint& at) {
        QMouseEvent event(type, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(this, &event);
    }
    void key(QEvent::Type type, int key, bool isRepeat) {
        QKeyEvent event(type, key, Qt::NoModifier, QString(), isRepeat);
        QCoreApplication::sendEvent(this, &event);
    }

protected:
    void sendPtz(int direction) override { sent << direction; }
};

/// A grid of cameras that are online and send nothing.
struct Grid {
    explicit Grid(int cameras, int layout = orvelle::kGrid4x4) {
        for (int i = 0; i < cameras; ++i)
            owned.push_back(std::make_unique<FakeDevice>(QStringLiteral("CAM%1").arg(i)));
        for (const auto& device : owned)
            devices << device.get();
        group = orvelle::test::groupOf(devices, QStringLiteral("group"));
        group->setLayout(layout);
        preview.resize(800, 640);
        preview.show();
        preview.setGroup(group.get());
        ui = preview.findChild<KvDevicesPreviewUI*>();
    }
    ~Grid() { preview.setGroup(nullptr); }

    void click(int layout) const { QTest::mouseClick(ui->layoutButton(layout), Qt::LeftButton); }
    QPoint centreOf(int tile) const { return ui->tiles()[tile]->geometry().center(); }
    void mouse(QEvent::Type type, const QPoint& at) {
        QMouseEvent event(type, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&preview, &event);
    }
    void drag(int from, const QPoint& to) {
        mouse(QEvent::MouseButtonPress, centreOf(from));
        mouse(QEvent::MouseMove, to);
        mouse(QEvent::MouseButtonRelease, to);
    }
    QStringList shown() const {
        QStringList uids;
        for (const KvDevicePlayerView* tile : ui->tiles())
            if (tile->isVisible())
                uids << tile->device()->uid();
        return uids;
    }

    std::vector<std::unique_ptr<FakeDevice>> owned;
    QList<KvDevice*> devices;
    std::unique_ptr<KvDeviceGroup> group;
    KvDevicesPreview preview;
    KvDevicesPreviewUI* ui = nullptr;
};

}  // namespace

class PreviewTest : public QObject {
    Q_OBJECT

private slots:
    void newCode_isOfferedByTheTile_whoseCameraRefusesThePassword() {
        Grid grid(2);
        KvDevicePlayerView* tile = grid.ui->tiles()[1];
        QPushButton* button = tile->findChild<KvDevicePlayerViewUI*>()->notice()->button();
        for (const auto state : {FakeDevice::State::kUnreachable, FakeDevice::State::kRefusedForNow,
                                 FakeDevice::State::kFull, FakeDevice::State::kWrongPassword,
                                 FakeDevice::State::kOnline}) {
            grid.owned[1]->setState(state);
            tile->setDevice(grid.devices[1]);
            const bool needsCode = state == FakeDevice::State::kWrongPassword;
            QVERIFY(button->isVisible());
            QCOMPARE(button->text(), orvelle::text(needsCode ? "enter_new_code" : "retry"));
            if (!needsCode)
                continue;
            KvDevice* asked = nullptr;
            const auto connection = connect(&grid.preview, &KvDevicesPreview::enterCode,
                                            [&asked](KvDevice* device) { asked = device; });
            QTest::mouseClick(button, Qt::LeftButton);
            disconnect(connection);
            QCOMPARE(asked, grid.devices[1]);
        }
    }

    void tilePlaces_followTheArrangement_data() {
        QTest::addColumn<int>("layout");
        QTest::addColumn<int>("tile");
        QTest::addColumn<QRect>("place");
        // 803 x 602: a third is 267 x 200, a quarter 200 x 150.
        QTest::newRow("1x1") << 0 << 0 << QRect(0, 0, 803, 602);
        QTest::newRow("2x2 last") << 1 << 3 << QRect(401, 301, 401, 301);
        QTest::newRow("3x3 row by row") << 2 << 5 << QRect(534, 200, 267, 200);
        QTest::newRow("6 big") << 3 << 0 << QRect(0, 0, 534, 400);
        QTest::newRow("6 right") << 3 << 2 << QRect(534, 200, 267, 200);
        QTest::newRow("6 bottom") << 3 << 3 << QRect(0, 400, 267, 200);
        QTest::newRow("13 before the big one") << 4 << 4 << QRect(0, 150, 200, 150);
        QTest::newRow("13 big") << 4 << 5 << QRect(200, 150, 400, 300);
        QTest::newRow("13 right of it") << 4 << 6 << QRect(600, 150, 200, 150);
        QTest::newRow("13 second row of it") << 4 << 7 << QRect(0, 300, 200, 150);
        QTest::newRow("13 right again") << 4 << 8 << QRect(600, 300, 200, 150);
        QTest::newRow("13 last") << 4 << 12 << QRect(600, 450, 200, 150);
        QTest::newRow("4x4 last") << 5 << 15 << QRect(600, 450, 200, 150);
        QTest::newRow("6x6 last") << 6 << 35 << QRect(665, 500, 133, 100);
    }
    void tilePlaces_followTheArrangement() {
        QFETCH(int, layout);
        QFETCH(int, tile);
        const auto places = orvelle::tilePlaces(layout, {803, 602});
        QCOMPARE(int(places.size()), orvelle::tileCount(layout));
        QTEST(places.at(size_t(tile)), "place");
    }

    void usableLayout_holdsTheCameras_data() {
        QTest::addColumn<int>("stored");
        QTest::addColumn<int>("cameras");
        QTest::addColumn<int>("shown");
        QTest::newRow("fits") << 3 << 6 << 3;
        QTest::newRow("too small") << 1 << 5 << 3;
        QTest::newRow("much too small") << 0 << 14 << 5;
        QTest::newRow("no button") << 6 << 2 << 5;
        QTest::newRow("unknown") << 99 << 4 << 1;
        QTest::newRow("negative") << -1 << 1 << 0;
        QTest::newRow("too many") << 2 << 1000 << 5;
    }
    void usableLayout_holdsTheCameras() {
        QFETCH(int, stored);
        QFETCH(int, cameras);
        QTEST(orvelle::usableLayout(stored, cameras), "shown");
    }

    void qualityImage_dependsOnTheModel_data() {
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("images");  // of the qualities 1 to 5
        QTest::newRow("0") << 0x3F00 << "fhd fhd hd hd hd";
        QTest::newRow("1") << 0x4000 << "hd hd vga vga vga";
        QTest::newRow("2") << 0x8000 << "fhd fhd vga vga vga";
        QTest::newRow("3") << int(0xFFFFFFFF) << "fhd vga vga hd vga";
    }
    void qualityImage_dependsOnTheModel() {
        QFETCH(int, version);
        QStringList images;
        for (int quality = 1; quality <= 5; ++quality)
            images << KvDevicePlayerView::qualityImage(quality, version)
                          .section(QLatin1Char('_'), 0, 0);
        QTEST(images.join(QLatin1Char(' ')), "images");
    }

    void press_turnsByZone_columnsFirst_data() {
        QTest::addColumn<QPoint>("at");
        QTest::addColumn<int>("direction");
        QTest::newRow("corner") << QPoint(52, 0) << 2;
        QTest::newRow("first of the middle") << QPoint(53, 0) << 1;
        QTest::newRow("last of the middle") << QPoint(105, 129) << 4;
        QTest::newRow("right") << QPoint(106, 129) << 8;
        QTest::newRow("centre") << QPoint(80, 65) << 0;
    }
    void press_turnsByZone_columnsFirst() {
        QFETCH(QPoint, at);
        QFETCH(int, direction);
        Pad pad;
        pad.mouse(QEvent::MouseButtonPress, at);
        QCOMPARE(pad.direction(), direction);
        pad.mouse(QEvent::MouseButtonRelease, at);
        QCOMPARE(pad.sent, (QVector<int>{direction, 0}));
    }

    void dragAcross_stopsAtEveryZone() {
        Pad pad;
        pad.mouse(QEvent::MouseButtonPress, {10, 65});
        for (const int x : {20, 60, 90, 120, 140})
            pad.mouse(QEvent::MouseMove, {x, 65});
        QCOMPARE(pad.sent, (QVector<int>{2, 0, 0, 0, 8}));
    }

    void heldKey_turnsUntilItIsLetGo() {
        Pad pad;
        pad.key(QEvent::KeyPress, Qt::Key_Up, false);
        pad.key(QEvent::KeyRelease, Qt::Key_Up, true);
        pad.key(QEvent::KeyPress, Qt::Key_Up, true);
        QCOMPARE(pad.sent, (QVector<int>{1, 1}));
        pad.key(QEvent::KeyPress, Qt::Key_A, false);
        pad.key(QEvent::KeyRelease, Qt::Key_A, false);
        QCOMPARE(pad.sent, (QVector<int>{1, 1, 0}));
    }

    void turning_stops_whenTheReleaseIsLost_data() {
        QTest::addColumn<QString>("event");
        for (const char* event : {"focus", "hide", "device"})
            QTest::newRow(event) << event;
    }
    void turning_stops_whenTheReleaseIsLost() {
        QFETCH(QString, event);
        Pad pad;
        pad.key(QEvent::KeyPress, Qt::Key_Left, false);
        if (event == QLatin1String("hide")) {
            pad.hide();
        } else if (event == QLatin1String("device")) {
            pad.setDevice(nullptr);
        } else {
            QFocusEvent away(QEvent::FocusOut);
            QCoreApplication::sendEvent(&pad, &away);
        }
        QCOMPARE(pad.sent, (QVector<int>{2, 0}));
    }

    void layout_isRefused_whenCamerasDoNotFit() {
        Grid grid(5);
        for (const int tooSmall : {orvelle::kGrid1x1, orvelle::kGrid2x2}) {
            grid.click(tooSmall);
            QVERIFY(grid.preview.findChild<KvToastView*>());
            QCOMPARE(grid.group->layout(), int(orvelle::kGrid4x4));
            QCOMPARE(grid.ui->layoutButton(tooSmall)->state(), 0);
        }
        for (const int fits : {orvelle::kGrid3x3, orvelle::kGrid6, orvelle::kGrid13}) {
            grid.click(fits);
            QCOMPARE(grid.group->layout(), fits);
            QCOMPARE(grid.ui->layoutButton(fits)->state(), 1);
            QCOMPARE(grid.shown().size(), 5);
        }
    }

    void everyCamera_isShown_whenTheStoredLayoutIsWrong() {
        for (const int stored : {0, 6, 99})
            QCOMPARE(Grid(7, stored).shown().size(), 7);
    }

    void neighbour_isTheNearestOnThatSide_data() {
        using orvelle::GridDirection;
        QTest::addColumn<int>("layout");
        QTest::addColumn<int>("from");
        QTest::addColumn<QVector<int>>("next");  // left, right, up, down
        QTest::newRow("1x1") << 0 << 0 << QVector<int>{-1, -1, -1, -1};
        QTest::newRow("3x3 middle") << 2 << 4 << QVector<int>{3, 5, 1, 7};
        QTest::newRow("3x3 corner") << 2 << 8 << QVector<int>{7, -1, 5, -1};
        QTest::newRow("6 big") << 3 << 0 << QVector<int>{-1, 1, -1, 3};
        QTest::newRow("6 beside it") << 3 << 2 << QVector<int>{0, -1, 1, 5};
        QTest::newRow("6 below it") << 3 << 4 << QVector<int>{3, 5, 0, -1};
        QTest::newRow("13 big") << 4 << 5 << QVector<int>{4, 6, 1, 10};
        QTest::newRow("13 above it") << 4 << 2 << QVector<int>{1, 3, -1, 5};
        QTest::newRow("unknown") << 2 << 9 << QVector<int>{-1, -1, -1, -1};
    }
    void neighbour_isTheNearestOnThatSide() {
        QFETCH(int, layout);
        QFETCH(int, from);
        QFETCH(QVector<int>, next);
        const auto places = orvelle::tilePlaces(layout, {803, 602});
        for (int direction = 0; direction < 4; ++direction)
            QCOMPARE(
                orvelle::neighbourOf(places, from, static_cast<orvelle::GridDirection>(direction)),
                next[direction]);
    }

    void keys_moveSwapOpenAndChooseTheLayout() {
        Grid grid(4, orvelle::kGrid2x2);
        QVERIFY(QTest::qWaitForWindowActive(&grid.preview));
        const auto press = [](int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), modifiers);
        };
        const auto focused = [&grid] {
            for (size_t i = 0; i < grid.ui->tiles().size(); ++i)
                if (grid.ui->tiles()[i]->hasFocus())
                    return grid.ui->tiles()[i]->device()->uid();
            return QString();
        };
        grid.preview.setFocus();
        press(Qt::Key_Down);
        QCOMPARE(focused(), QStringLiteral("CAM0"));
        press(Qt::Key_Right);
        press(Qt::Key_Down);
        QCOMPARE(focused(), QStringLiteral("CAM3"));
        press(Qt::Key_Down);
        QCOMPARE(focused(), QStringLiteral("CAM3"));
        press(Qt::Key_Left, Qt::ControlModifier);
        QCOMPARE(focused(), QStringLiteral("CAM3"));
        QCOMPARE(grid.group->uids().join(QLatin1Char(' ')), QStringLiteral("CAM0 CAM1 CAM3 CAM2"));
        press(Qt::Key_Return);
        QCOMPARE(grid.shown(), QStringList{QStringLiteral("CAM3")});
        QVERIFY(!grid.preview.isFullscreen());
        press(Qt::Key_Up);
        QCOMPARE(grid.shown(), QStringList{QStringLiteral("CAM0")});
        QCOMPARE(focused(), QStringLiteral("CAM0"));
        press(Qt::Key_Escape);
        QCOMPARE(grid.shown().size(), 4);
        press(Qt::Key_1);
        QCOMPARE(grid.group->layout(), int(orvelle::kGrid2x2));
        for (const auto& [key, layout] :
             {std::pair{Qt::Key_3, orvelle::kGrid6}, std::pair{Qt::Key_4, orvelle::kGrid3x3},
              std::pair{Qt::Key_6, orvelle::kGrid4x4}}) {
            press(key);
            QCOMPARE(grid.group->layout(), int(layout));
        }
        // A button that has the keyboard is pressed, and no picture opened.
        grid.ui->layoutButton(orvelle::kGrid6)->setFocus();
        press(Qt::Key_Return);
        QCOMPARE(grid.shown().size(), 4);
        emit grid.ui->tiles()[0]->clickSettingButton(grid.ui->tiles()[0]);
        press(Qt::Key_2);
        QCOMPARE(grid.group->layout(), int(orvelle::kGrid4x4));
    }

    void wholeGrid_fillsTheScreen_andComesBack() {
        Grid grid(4, orvelle::kGrid2x2);
        const QRect before = grid.ui->tiles()[3]->geometry();
        QSignalSpy requested(&grid.preview, &KvDevicesPreview::requestFullscreen);
        QTest::mouseClick(grid.ui->wholeGridButton(), Qt::LeftButton);
        QCOMPARE(requested.takeFirst().at(0).toBool(), true);
        QVERIFY(grid.preview.isFullscreen());
        QCOMPARE(grid.shown().size(), 4);
        QCOMPARE(grid.ui->tiles()[3]->geometry(), QRect(400, 320, 400, 320));
        // The tile's own button leads out of it as well.
        emit grid.ui->tiles()[1]->clickFullButton(grid.ui->tiles()[1], false);
        QCOMPARE(requested.takeFirst().at(0).toBool(), false);
        QCOMPARE(grid.ui->tiles()[3]->geometry(), before);
    }

    void cells_haveGutters_andEmptyOnesAreSeen() {
        Grid grid(3, orvelle::kGrid2x2);
        const QRect first = grid.ui->tiles()[0]->geometry();
        const QImage image = grid.preview.grab().toImage();
        const QRgb gutter = image.pixel(first.right() + 1, 40);
        QCOMPARE(image.pixel(first.right(), 40), gutter);
        QVERIFY(image.pixel(first.right() + 2, 40) != gutter);
        const QPoint empty(600, 450);
        QVERIFY(image.pixel(empty) != gutter && image.pixel(empty) != qRgb(0, 0, 0));
        QVERIFY(qGray(gutter) < 48);
    }

    void badge_standsForTheBar_thatIsAway() {
        Grid grid(1, orvelle::kGrid1x1);
        KvDevicePlayerView* tile = grid.ui->tiles()[0];
        auto* ui = tile->findChild<KvDevicePlayerViewUI*>();
        QVERIFY(ui->badge()->isVisible());
        const int named = ui->badge()->width();
        ui->setRecorded(true);
        ui->setHeard(true);
        QVERIFY(ui->badge()->width() > named);
        QVERIFY(tile->accessibleDescription().contains(orvelle::text("is_being_recorded")));
        QVERIFY(tile->accessibleDescription().contains(orvelle::text("sound_is_on")));
        ui->overlay().setBarsShown(true);
        QVERIFY(!ui->badge()->isVisible());
        ui->overlay().setBarsShown(false);
        ui->setName(QString(200, QLatin1Char('W')));
        QVERIFY(ui->badge()->isVisible() && ui->badge()->geometry().right() < ui->width());
        tile->setDevice(nullptr);
        QVERIFY(!ui->badge()->isVisible());
    }

    void readersOfTheScreen_areToldEverything() {
        Grid grid(2, orvelle::kGrid1x1);
        const auto told = [](QWidget* widget, QAccessible::Text what) {
            return QAccessible::queryAccessibleInterface(widget)->text(what);
        };
        KvDevicePlayerView* tile = grid.ui->tiles()[0];
        auto* ui = tile->findChild<KvDevicePlayerViewUI*>();
        QCOMPARE(told(tile, QAccessible::Name), QStringLiteral("CAM0"));
        QVERIFY(told(tile, QAccessible::Description).contains(orvelle::text("online")));
        QCOMPARE(told(grid.ui->layoutButton(orvelle::kGrid6), QAccessible::Name),
                 QStringLiteral("Six pictures"));
        QCOMPARE(told(grid.ui->wholeGridButton(), QAccessible::Name),
                 orvelle::text("full_screen_of_all_pictures"));
        QCOMPARE(told(ui->volumeSlider(), QAccessible::Name), orvelle::text("volume"));
        auto* value = QAccessible::queryAccessibleInterface(ui->volumeSlider())->valueInterface();
        QVERIFY(value);
        QCOMPARE(value->maximumValue().toInt(), 100);
        for (int button = 0; button < KvDevicePlayerViewUI::kButtonCount; ++button) {
            if (button != KvDevicePlayerViewUI::kQuality)
                QVERIFY(!told(ui->button(KvDevicePlayerViewUI::Button(button)), QAccessible::Name)
                             .isEmpty());
        }
    }

    void drag_swapsTwoTiles() {
        Grid grid(4, orvelle::kGrid2x2);
        QSignalSpy changed(&grid.preview, &KvDevicesPreview::deviceGroupInfoChanged);
        grid.drag(3, grid.centreOf(1));
        const QStringList swapped{QStringLiteral("CAM0"), QStringLiteral("CAM3"),
                                  QStringLiteral("CAM2"), QStringLiteral("CAM1")};
        QCOMPARE(grid.group->uids(), swapped);
        QCOMPARE(grid.shown(), swapped);
        grid.drag(0, grid.centreOf(0) + QPoint(40, 0));
        grid.drag(0, {5, 635});
        grid.drag(0, {-50, 10});
        QCOMPARE(grid.shown(), swapped);
        QCOMPARE(changed.count(), 1);
        grid.group->setType(KvDeviceGroup::kSingleCamera);
        grid.drag(0, grid.centreOf(1));
        QCOMPARE(changed.count(), 1);
    }

    void fullscreen_showsOneTileAndLeavesTheLayout() {
        Grid grid(4, orvelle::kGrid2x2);
        KvDevicePlayerView* tile = grid.ui->tiles()[2];
        const QRect before = tile->geometry();
        QSignalSpy requested(&grid.preview, &KvDevicesPreview::requestFullscreen);
        emit tile->clickFullButton(tile, true);
        QCOMPARE(requested.takeFirst().at(0).toBool(), true);
        QVERIFY(grid.preview.isFullscreen());
        QCOMPARE(tile->geometry(), grid.preview.rect());
        QCOMPARE(grid.shown(), QStringList{QStringLiteral("CAM2")});
        grid.preview.exitsFullscreen();
        QVERIFY(!grid.preview.isFullscreen());
        QCOMPARE(tile->geometry(), before);
        QCOMPARE(grid.shown().size(), 4);
        QCOMPARE(grid.group->layout(), int(orvelle::kGrid2x2));
    }

    void tab_reachesHiddenBars_butNothingUnderAPage() {
        Grid grid(1, orvelle::kGrid1x1);
        QVERIFY(QTest::qWaitForWindowActive(&grid.preview));
        KvDevicePlayerView* tile = grid.ui->tiles()[0];
        tile->setFocus();
        tile->findChild<KvDevicePlayerViewUI*>()->overlay().setBarsShown(false);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QVERIFY(tile->isAncestorOf(QApplication::focusWidget()));
        emit tile->clickSettingButton(tile);
        // Nor is it drawn.
        QVERIFY(grid.shown().isEmpty());
        for (int i = 0; i < 20; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QVERIFY(grid.ui->infoView()->isAncestorOf(QApplication::focusWidget()));
        }
        emit grid.ui->infoView()->clickBackButton();
        QVERIFY(tile->hasFocus());
        QCOMPARE(grid.shown().size(), 1);
    }

    void focus_staysInTheTile_whenItsControlGoes() {
        Grid grid(2, orvelle::kGrid2x2);
        QVERIFY(QTest::qWaitForWindowActive(&grid.preview));
        KvDevicePlayerView* tile = grid.ui->tiles()[0];
        auto* ui = tile->findChild<KvDevicePlayerViewUI*>();
        ui->overlay().setBarsShown(true);
        ui->setRecordShown(true);
        ui->recordView()->saveButton()->setFocus();
        ui->setRecordShown(false);
        QCOMPARE(grid.preview.focusWidget(), tile);
        // A dialog has the keyboard, and the tile gets it back.
        KvPushButton* settings = ui->button(KvDevicePlayerViewUI::kSettings);
        settings->setFocus();
        QDialog dialog(&grid.preview);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        grid.owned[0]->setState(FakeDevice::State::kUnreachable);
        QTRY_VERIFY(!settings->isEnabled());
        QCOMPARE(grid.preview.focusWidget(), tile);
    }

    void cameras_areLetGo_withTheirEntry() {
        Grid grid(3, orvelle::kGrid2x2);
        KvDevicePlayerView* tile = grid.ui->tiles()[1];
        emit tile->clickSettingButton(tile);
        emit tile->clickFullButton(tile, true);
        grid.preview.setGroup(nullptr);
        grid.owned[1].reset();
        QVERIFY(!tile->device() && !grid.preview.isFullscreen() && grid.shown().isEmpty());
        emit grid.ui->tiles()[0]->clickCloseButton(grid.ui->tiles()[0]);
        QVERIFY(!grid.preview.group() && grid.preview.isHidden());
    }

    void buttons_areOff_whileTheyDoNothing() {
        FakeDevice device(QStringLiteral("CAM"), FakeDevice::State::kUnreachable);
        KvDevicePlayerView tile;
        const auto* ui = tile.findChild<KvDevicePlayerViewUI*>();
        using UI = KvDevicePlayerViewUI;
        const auto off = [ui] {
            QVector<int> buttons;
            for (const UI::Button button :
                 {UI::kSdCard, UI::kSettings, UI::kClose, UI::kPlay, UI::kSound, UI::kRecord,
                  UI::kCapture, UI::kPtz, UI::kFullscreen})
                if (!ui->button(button)->isEnabled())
                    buttons << button;
            return buttons;
        };
        tile.setDevice(&device);
        const QVector<int> withoutPicture{UI::kPlay, UI::kSound, UI::kRecord, UI::kCapture,
                                          UI::kPtz};
        QCOMPARE(off(), QVector<int>{UI::kSettings} + withoutPicture);
        device.setState(FakeDevice::State::kOnline);
        QTRY_COMPARE(off(), withoutPicture);
        tile.setDevice(nullptr);
    }

    void thumbUpdates_areGathered() {
        Grid grid(2, orvelle::kGrid2x2);
        QSignalSpy updated(&grid.preview, &KvDevicesPreview::deviceGroupThumbUpdate);
        for (KvDevicePlayerView* tile : grid.ui->tiles())
            emit tile->playerViewThumbUpdate(tile);
        QCOMPARE(updated.count(), 1);
        // All that were held back come as one.
        QTRY_COMPARE(updated.count(), 2);
        QVERIFY(!updated.wait(1500));
    }
};

static const orvelle::test::RegisterSuite<PreviewTest> kPreviewTest;
#include "preview_test.moc"
