#include <QFocusFrame>
#include <QLineEdit>
#include <QPainter>
#include <QSignalSpy>

#include "support/suites.h"
#include "ui/widgets/animation_view.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/clicker.h"
#include "ui/widgets/line_edit_filter.h"
#include "ui/widgets/loading_message_view.h"
#include "ui/widgets/loading_view.h"
#include "ui/widgets/name_width.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/toast.h"
#include "ui/widgets/toast_dialog.h"

namespace {

const QString kText = QStringLiteral("some text");
constexpr QPoint kInside(20, 20);
constexpr QPoint kOutside(-5, 20);
constexpr QPoint kEdge(100, 80);  // of a widget of 100 x 80: still counts

QImage imageOf(QWidget& widget) {
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

}  // namespace

class WidgetsTest : public QObject {
    Q_OBJECT

private slots:
    void toast_standsWhereFlagsSay() {
        const struct {
            int flags;
            QPoint position;  // of a view of 200 x 30 on 1000 x 600
        } cases[] = {
            {0, {400, 560}}, {9, {10, 10}}, {20, {790, 285}}, {4, {400, 285}}, {24, {10, 560}}};
        QWidget parent;
        parent.resize(1000, 600);
        KvToast toast;
        toast.show(&parent, kText, 0, 100000);
        const QSize missing = QSize(200, 30) - (toast.view()->size() - QSize(20, 10));
        toast.setPaddings(missing.width() / 2, missing.height() / 2);
        for (const auto& each : cases) {
            toast.show(&parent, kText, each.flags, 100000);
            QVERIFY((toast.view()->pos() - each.position).manhattanLength() <= 2);
        }
    }

    void toast_isReplaced_andOldTimerNoLongerFires() {
        QWidget parent;
        KvToast toast;
        KvToast clock;
        toast.show(&parent, kText, 0, 1);
        const QPointer<KvToastView> first = toast.view();
        toast.show(&parent, kText, 0, 100000);
        QVERIFY(first->isHidden() && toast.view() != first);
        clock.show(&parent, kText, 0, 60);
        QTRY_VERIFY(!clock.view() && !first);
        QVERIFY(toast.view());
    }

    void toast_survivesItsParent_andFitsANarrowOne() {
        KvToast toast;
        {
            QWidget parent;
            parent.resize(120, 400);
            toast.show(&parent, kText + kText + kText + kText, 0, 100000);
            QVERIFY(toast.view()->width() <= 100 && toast.view()->height() > 40);
            QVERIFY(parent.rect().contains(toast.view()->geometry()));
        }
        QVERIFY(!toast.view());
        QWidget next;
        toast.show(&next, kText);
        QVERIFY(toast.view());
    }

    void toastDialog_closesByItselfOrByKey() {
        QWidget parent;
        parent.setGeometry(100, 100, 600, 400);
        KvToastDialog dialog(&parent);
        dialog.setPaddings(50, 8);
        dialog.setText(kText);
        QCOMPARE(dialog.run(30), int(QDialog::Accepted));
        QTimer::singleShot(0, &dialog, [&dialog] { QTest::keyClick(&dialog, Qt::Key_Space); });
        QCOMPARE(dialog.run(1000000), int(QDialog::Accepted));
    }

    void animation_turnsWithoutEnd_andStopsUpright() {
        QPixmap halves(20, 20);
        halves.fill(Qt::blue);
        QPainter(&halves).fillRect(0, 0, 10, 20, Qt::red);
        KvAnimationView view;
        view.resize(40, 40);
        QImage empty = imageOf(view);
        view.setPixmap(halves);
        view.setStep(180.0);
        view.setInterval(1);
        view.start();
        QTRY_VERIFY(view.angle() > 720.0);
        view.stop();
        QCOMPARE(view.angle(), 0.0);
        QCOMPARE(imageOf(view).pixelColor(10, 20), QColor(Qt::red));
        QMetaObject::invokeMethod(&view, "_doAnimation");
        QCOMPARE(view.angle(), 180.0);
        QCOMPARE(imageOf(view).pixelColor(10, 20), QColor(Qt::blue));
        view.setPixmap({});
        QCOMPARE(imageOf(view), empty);
    }

    void name_isCutToWholeCharacters() {
        const QString latin(20, QLatin1Char('x'));
        const QString chinese(10, QChar(0x6444));
        const QString pair = QString::fromUtf8("\xF0\x9F\x93\xB7");
        const struct {
            QString name;
            int maximum;
            QString cut;
        } cases[] = {{latin, 20, latin},
                     {latin + QChar(0xff), 20, latin},
                     {chinese, 20, chinese},
                     {chinese + latin, 20, chinese},
                     {latin.left(19) + chinese, 20, latin.left(19)},
                     {pair + pair, 3, pair},
                     {pair.left(1) + latin, 3, pair.left(1) + latin.left(1)},
                     {latin + chinese, -1, latin + chinese},
                     {latin, 0, QString()}};
        for (const auto& each : cases) {
            QLineEdit edit(each.name);
            edit.setCursorPosition(1);
            orvelle::cutToWidth(edit, each.maximum);
            QCOMPARE(edit.text(), each.cut);
            QCOMPARE(edit.cursorPosition(), qMin(1, each.cut.size()));
        }
    }

    void clicker_tellsClicksApart() {
        const struct {
            QVector<QPoint> releases;
            Qt::MouseButton button;
            const char* result;
        } cases[] = {{{kInside}, Qt::LeftButton, "click "},
                     {{kInside, kEdge}, Qt::LeftButton, "double "},
                     {{kInside, kInside, kInside}, Qt::LeftButton, "double click "},
                     {{kOutside}, Qt::LeftButton, ""},
                     {{kInside, kOutside}, Qt::LeftButton, ""},
                     {{kOutside, kInside}, Qt::LeftButton, "click "},
                     {{kInside}, Qt::RightButton, "right20 "},
                     {{kInside}, Qt::MiddleButton, ""}};
        for (const auto& each : cases) {
            QWidget target;
            target.resize(100, 80);
            KvClicker clicker(&target);
            QByteArray seen;
            connect(&clicker, &KvClicker::click, [&] { seen += "click "; });
            connect(&clicker, &KvClicker::doubleClick, [&] { seen += "double "; });
            connect(&clicker, &KvClicker::rightClick,
                    [&](int x, int) { seen += "right" + QByteArray::number(x) + ' '; });
            QTest::mouseRelease(&target, Qt::LeftButton, {}, kInside);
            auto press = QEvent::MouseButtonPress;
            for (const QPoint& at : each.releases) {
                QMouseEvent event(press, kInside, each.button, each.button, {});
                QCoreApplication::sendEvent(&target, &event);
                QTest::mouseRelease(&target, each.button, {}, at);
                press = QEvent::MouseButtonDblClick;
            }
            QVERIFY(!seen.endsWith("click "));
            waitForLaterClick();
            QCOMPARE(seen, QByteArray(each.result));
        }
    }

    void clicker_forgets_whenTargetGoes() {
        auto target = std::make_unique<QWidget>();
        KvClicker clicker(target.get());
        QSignalSpy clicks(&clicker, &KvClicker::click);
        QTest::mouseClick(target.get(), Qt::LeftButton, {}, kInside);
        clicker.setTarget(nullptr);
        waitForLaterClick();
        QTest::mouseClick(target.get(), Qt::LeftButton, {}, kInside);
        clicker.setTarget(target.get());
        target.reset();
        waitForLaterClick();
        QCOMPARE(clicks.size(), 0);
    }

    void clickLabel_isClickedByMouseAndKeys() {
        KvClickLabel label;
        ClickLabel tagged;
        QSignalSpy clicks(&label, &KvClickLabel::click);
        QSignalSpy taggedClicks(&tagged, &ClickLabel::click);
        for (QWidget* each : {static_cast<QWidget*>(&label), static_cast<QWidget*>(&tagged)}) {
            each->resize(100, 80);
            QTest::mouseRelease(each, Qt::LeftButton, {}, kOutside);
            QTest::mouseClick(each, Qt::RightButton, {}, kInside);
            QTest::keyClick(each, Qt::Key_A);
            QTest::mouseClick(each, Qt::LeftButton, {}, kInside);
            QTest::keyClick(each, Qt::Key_Space);
            QTest::keyClick(each, Qt::Key_Enter);
        }
        QCOMPARE(clicks.size(), 3);
        QCOMPARE(taggedClicks.size(), 3);
    }

    void pushButton_showsTheImageOfItsState() {
        KvPushButton button;
        button.resize(24, 24);
        const auto first = KvWidgetUtils::imagesOf(QStringLiteral("minimized"));
        const auto second = KvWidgetUtils::imagesOf(QStringLiteral("maximized"));
        QVERIFY(!first.hover.isEmpty() && first.pressed.isEmpty() && first.disabled.isEmpty());
        button.setImages(first, second);
        const QImage unchecked = imageOf(button);
        QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(button.state(), 0);
        button.setState(1);
        const QImage checked = imageOf(button);
        QVERIFY(checked != unchecked);
        button.setImages(first);
        QCOMPARE(imageOf(button), unchecked);
        KvWidgetUtils::setUpImageButton(&button, QStringLiteral("video"), "record_video");
        QVERIFY(!button.toolTip().isEmpty() && button.accessibleName() == button.toolTip());
        const QImage normal = imageOf(button);
        button.setDown(true);
        QVERIFY(imageOf(button) != normal);
    }

    void widget_paintsARoundedBox() {
        KvWidget box;
        box.resize(40, 40);
        QImage ground = imageOf(box);
        box.setBackgroundColor(0x0000ff, 255);
        box.setBorder(4, 12, Qt::red);
        const QImage image = imageOf(box);
        QCOMPARE(image.pixel(0, 0), ground.pixel(0, 0));
        QCOMPARE(image.pixelColor(20, 20), QColor(Qt::blue));
        for (const QPoint& edge : {QPoint(20, 1), QPoint(1, 20), QPoint(38, 20), QPoint(20, 38)})
            QCOMPARE(image.pixelColor(edge), QColor(Qt::red));
        box.setBorder(0, 0);
        box.setBackgroundColor(0x0000ff, 0);
        QCOMPARE(imageOf(box), ground);
    }

    void cover_liesOverAParent_untilHiddenOrGone() {
        QWidget parent;
        auto* child = new QWidget(&parent);
        child->setGeometry(10, 20, 300, 200);
        parent.show();
        auto message = std::make_unique<KvLoadingMessageView>();
        KvLoadingView loading;
        loading.setText(kText);
        loading.hideOver();
        for (orvelle::CoverView* cover :
             std::initializer_list<orvelle::CoverView*>{&loading, message.get()}) {
            cover->showOver(&parent);
            QCOMPARE(cover->geometry(), child->geometry());
            cover->showOver(&parent, QRect(0, 0, 160, 90));
            QCOMPARE(cover->geometry(), QRect(0, 0, 160, 90));
            const QImage first = imageOf(*cover);
            QTRY_VERIFY(imageOf(*cover) != first);
            for (const QWidget* part : cover->findChildren<QWidget*>())
                QVERIFY(cover->rect().contains(part->geometry()));
            loading.hideOver();
            QVERIFY(!loading.isOver() && loading.isHidden());
        }
        message.reset();
        QCOMPARE(parent.findChildren<QWidget*>(), {child});
    }

    void placeholder_isGone_whileFieldHasFocus() {
        QWidget window;
        QLineEdit edit(&window);
        edit.setPlaceholderText(kText);
        new QLineEditFilter(&edit);
        QLineEdit other(&window);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        edit.setFocus();
        QCOMPARE(edit.placeholderText(), QString());
        other.setFocus();
        QCOMPARE(edit.placeholderText(), kText);
    }

    void mouse_isNotInWhatWentFromUnderIt() {
        QWidget window;
        window.resize(300, 200);
        QWidget part(&window);
        part.setGeometry(0, 0, 100, 80);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCursor::setPos(part.mapToGlobal(kInside));
        QTRY_VERIFY(KvWidgetUtils::isMouseIn(part));
        part.move(0, 100);
        QVERIFY(!KvWidgetUtils::isMouseIn(part));
    }

    void focusRing_followsTheKeyboardOnly() {
        QWidget window;
        window.resize(300, 100);
        QVector<QPushButton*> buttons;
        for (int i = 0; i < 3; ++i) {
            buttons += new QPushButton(&window);
            buttons.last()->setGeometry(20 + 80 * i, 20, 60, 30);
        }
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::mouseClick(&window, Qt::LeftButton);
        QVERIFY(!shownRing(window));
        QTest::keyClick(&window, Qt::Key_Tab);
        QVERIFY(shownRing(window));
        QCOMPARE(shownRing(window)->geometry(), buttons.at(1)->geometry().adjusted(-3, -3, 3, 3));
        QTest::keyClick(&window, Qt::Key_Tab);
        QCOMPARE(shownRing(window)->widget(), buttons.at(2));
        buttons.at(2)->setStyleSheet(QStringLiteral("color:red"));
        QVERIFY(shownRing(window));
        // As after a dialog that was opened and closed by keys.
        buttons.at(1)->setFocus();
        QCOMPARE(shownRing(window)->widget(), buttons.at(1));
        buttons.at(0)->setFocus(Qt::MouseFocusReason);
        QVERIFY(!shownRing(window));
        // A button that goes with the click hands the focus on as Tab does.
        connect(buttons.at(0), &QPushButton::clicked, buttons.at(0), &QWidget::hide);
        QTest::mouseClick(buttons.at(0), Qt::LeftButton);
        QVERIFY(buttons.at(1)->hasFocus());
        QVERIFY(!shownRing(window));
    }

private:
    // By when a click that was made before must have been reported.
    static void waitForLaterClick() {
        QWidget other;
        KvClicker later(&other);
        QSignalSpy click(&later, &KvClicker::click);
        QTest::mouseClick(&other, Qt::LeftButton, {}, kInside);
        QTRY_COMPARE(click.size(), 1);
    }

    static QFocusFrame* shownRing(const QWidget& window) {
        auto* ring = window.findChild<QFocusFrame*>();
        return ring && ring->isVisible() ? ring : nullptr;
    }
};

static const orvelle::test::RegisterSuite<WidgetsTest> kWidgetsTest;
#include "widgets_test.moc"
