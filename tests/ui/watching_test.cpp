#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QtTest>

#include "media/live/device_player.h"
#include "render/raster_video_view.h"
#include "support/suites.h"
#include "ui/preview/keys_dialog.h"
#include "ui/preview/preview_keys.h"
#include "ui/preview/tile_sound.h"
#include "ui/widgets/picture_notice.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/video_overlay.h"
#include "ui/widgets/zoom_control.h"

extern "C" {
#include <libavutil/frame.h>
}

using orvelle::PreviewKey;
using orvelle::ZoomControl;

namespace {

/// A view with a picture, half as wide as the area that the mouse is on.
struct ZoomedView {
    ZoomedView() {
        area.resize(400, 100);
        view->setGeometry(200, 0, 200, 100);
        control.setSurface(view);
        area.show();
        orvelle::FramePtr frame(av_frame_alloc());
        frame->format = AV_PIX_FMT_YUV420P;
        frame->width = 64;
        frame->height = 32;
        if (av_frame_get_buffer(frame.get(), 0) == 0)
            view->showPicture(*frame);
    }

    /// What lies at a point of the area, in shares of the picture.
    QPointF pictureAt(const QPointF& point) const {
        const QRectF place = view->zoom().place(view->fit());
        return {((point.x() - 200) / 200 - place.left()) / place.width(),
                (point.y() / 100 - place.top()) / place.height()};
    }
    bool wheel(const QPointF& at, int clicks) {
        QWheelEvent event(at, at, {}, {0, 120 * clicks}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        return sends(event);
    }
    bool mouse(QEvent::Type type, const QPoint& at) {
        QMouseEvent event(type, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        return sends(event);
    }
    /// Whether it was taken.
    bool sends(QEvent& event) {
        event.setAccepted(false);
        QCoreApplication::sendEvent(&area, &event);
        return event.isAccepted();
    }

    QWidget area;
    orvelle::RasterVideoView* view = new orvelle::RasterVideoView(&area);
    ZoomControl control{&area};
};

}  // namespace

class WatchingTest : public QObject {
    Q_OBJECT

private slots:
    void wheel_zoomsAtTheMouse_andDraggingMoves() {
        ZoomedView zoomed;
        QSignalSpy changed(&zoomed.control, &ZoomControl::changed);
        const QPointF at(350, 40);
        QVERIFY(!zoomed.wheel(at, 4));
        zoomed.control.setEnabled(true);
        QVERIFY(!zoomed.mouse(QEvent::MouseButtonPress, at.toPoint()));
        const QPointF before = zoomed.pictureAt(at);
        QVERIFY(zoomed.wheel(at, 4));
        QVERIFY(zoomed.control.factor() > 2.0 && changed.count() == 1);
        QVERIFY((zoomed.pictureAt(at) - before).manhattanLength() < 1e-6);

        QVERIFY(zoomed.mouse(QEvent::MouseButtonPress, at.toPoint()));
        QVERIFY(zoomed.mouse(QEvent::MouseMove, at.toPoint() + QPoint(10, 5)));
        QVERIFY(zoomed.mouse(QEvent::MouseButtonRelease, at.toPoint() + QPoint(10, 5)));
        QVERIFY((zoomed.pictureAt(at + QPointF(10, 5)) - before).manhattanLength() < 1e-6);
        QVERIFY(!zoomed.mouse(QEvent::MouseMove, {300, 50}));

        zoomed.control.zoomBy(-100);
        QVERIFY(!zoomed.control.isActive());
        zoomed.wheel(at, 4);
        // The picture goes.
        zoomed.control.setEnabled(false);
        QCOMPARE(zoomed.view->zoom().factor(), 1.0);
        QCOMPARE(changed.last().at(0).toDouble(), 1.0);
    }

    void key_hasAMeaning_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<bool>("isHeld");
        QTest::addColumn<int>("meaning");
        const auto row = [](const char* name, Qt::Key key, Qt::KeyboardModifiers modifiers,
                            bool isHeld, PreviewKey meaning) {
            QTest::newRow(name) << int(key) << int(modifiers) << isHeld << int(meaning);
        };
        row("plain", Qt::Key_M, Qt::NoModifier, false, PreviewKey::kSound);
        row("with shift", Qt::Key_M, Qt::ShiftModifier, false, PreviewKey::kOnlyThisSound);
        row("of another program", Qt::Key_S, Qt::ControlModifier, false, PreviewKey::kNone);
        row("held toggle", Qt::Key_Space, Qt::NoModifier, true, PreviewKey::kNone);
        row("held arrow", Qt::Key_Left, Qt::NoModifier, true, PreviewKey::kLeft);
        row("held swap", Qt::Key_Left, Qt::ControlModifier, true, PreviewKey::kNone);
        row("keypad", Qt::Key_6, Qt::KeypadModifier, false, PreviewKey::kLayout6);
        row("plus behind shift", Qt::Key_Plus, Qt::ShiftModifier, false, PreviewKey::kZoomIn);
        row("question mark", Qt::Key_Question, Qt::ShiftModifier, false, PreviewKey::kHelp);
    }
    void key_hasAMeaning() {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(bool, isHeld);
        const QKeyEvent event(QEvent::KeyPress, key, Qt::KeyboardModifiers(modifiers), QString(),
                              isHeld);
        QTEST(int(orvelle::previewKey(event)), "meaning");
    }

    void everyKey_isInTheDialog() {
        QSet<QString> listed;
        for (const orvelle::KeyLine& line : orvelle::keyLines()) {
            QVERIFY(!line.keys.isEmpty() && !line.meaning.isEmpty());
            listed << line.keys;
        }
        for (int key = int(PreviewKey::kPause); key <= int(PreviewKey::kOpen); ++key)
            QVERIFY2(listed.contains(orvelle::keyName(PreviewKey(key))),
                     qPrintable(orvelle::keyName(PreviewKey(key))));
        orvelle::KeysDialog dialog(nullptr);
        QCOMPARE(dialog.findChildren<QPushButton*>().size(), 1);
        dialog.show();
        QTest::mouseClick(dialog.findChild<QPushButton*>(), Qt::LeftButton);
        QVERIFY(!dialog.isVisible());
    }

    void volume_isOneForButtonSliderAndWheel() {
        QWidget window;
        KvDevicePlayer player;
        auto* button = new KvPushButton(&window);
        QSlider slider(Qt::Horizontal, &window);
        slider.setRange(0, 100);
        orvelle::TileSound sound(player, button, &slider);
        QSignalSpy onlyThis(&sound, &orvelle::TileSound::onlyThisAsked);
        QVERIFY(!sound.isOn() && button->state() == 1);
        slider.setValue(30);
        QCOMPARE(player.volume(), 0.3);
        QCOMPARE(button->state(), 0);
        QCOMPARE(button->accessibleName(), orvelle::text("sound_is_on"));
        QVERIFY(button->toolTip().contains(QStringLiteral("(M)")));
        sound.toggle();
        QVERIFY(slider.value() == 0 && player.volume() == 0.0 && button->state() == 1);
        sound.toggle();
        QVERIFY(slider.value() == 100 && player.volume() == 1.0);
        QWheelEvent down({5, 5}, {5, 5}, {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                         Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(button, &down);
        QCOMPARE(slider.value(), 90);
        QMouseEvent twice(QEvent::MouseButtonDblClick, {5, 5}, Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(button, &twice);
        QCOMPARE(onlyThis.count(), 1);
        QVERIFY(sound.isOn());
        sound.silence();
        QCOMPARE(slider.value(), 0);
    }

    void bars_comeAndLeave_butNotFromUnderTheKeyboard() {
        QWidget view;
        view.resize(300, 200);
        view.setFocusPolicy(Qt::StrongFocus);
        QWidget ground(&view);
        ground.resize(300, 200);
        QWidget bar(&ground);
        QPushButton button(&bar);
        auto* overlay = new orvelle::VideoOverlay(&view, &ground);
        overlay->setParts({&bar}, {&bar});
        view.show();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        QCursor::setPos(view.mapToGlobal({250, 150}));
        QTRY_VERIFY(!bar.underMouse());
        overlay->wake();
        QVERIFY(!bar.isVisible());
        overlay->setEnabled(true);
        QHoverEvent hover(QEvent::HoverMove, {150, 150}, {140, 140});
        QCoreApplication::sendEvent(&view, &hover);
        QVERIFY(bar.isVisible());
        button.setFocus();
        overlay->rest();
        QVERIFY(bar.isVisible());
        view.setFocus();
        overlay->rest();
        QVERIFY(!bar.isVisible());
    }

    void notice_offersItsButton_andHandsTheFocusBack() {
        QWidget view;
        view.resize(200, 160);
        view.setFocusPolicy(Qt::StrongFocus);
        orvelle::PictureNotice notice(&view);
        notice.setGeometry(view.rect());
        view.show();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        QSignalSpy clicked(&notice, &orvelle::PictureNotice::actionClicked);
        notice.setContent({QStringLiteral("state_offline"), QStringLiteral("Gate\nUnreachable"),
                           QStringLiteral("Retry"), false});
        QVERIFY(notice.button()->isVisible() && view.rect().contains(notice.button()->geometry()));
        QTest::mouseClick(notice.button(), Qt::LeftButton);
        QCOMPARE(clicked.count(), 1);
        notice.button()->setFocus();
        notice.setContent({});
        QVERIFY(notice.isHidden() && view.hasFocus());
        // In a tile that is too low the sign gives way.
        notice.resize(200, 90);
        notice.setContent({QStringLiteral("state_offline"), QStringLiteral("Gate\nUnreachable"),
                           QStringLiteral("Retry"), false});
        QVERIFY(notice.rect().contains(notice.button()->geometry()));
    }
};

static const orvelle::test::RegisterSuite<WatchingTest> kWatchingTest;
#include "watching_test.moc"
