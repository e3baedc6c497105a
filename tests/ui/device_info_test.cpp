#include <QPushButton>
#include <QSignalSpy>

#include <thread>

#include "device/tutk_request.h"
#include "fake_device.h"
#include "link/io_types.h"
#include "support/byte_fields.h"
#include "support/suites.h"
#include "ui/dialogs/alert_dialog.h"
#include "ui/info/device_info_view.h"
#include "ui/info/device_info_view_ui.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/devices_preview.h"
#include "ui/preview/devices_preview_ui.h"
#include "ui/widgets/text.h"

using orvelle::text;
using orvelle::test::FakeDevice;
using UI = KvTUTKDeviceInfoViewUI;
using Types = QVector<uint32_t>;

namespace {

constexpr auto kWifi = IOTYPE_USER_IPCAM_GETWIFI_REQ;
constexpr auto kInfo = IOTYPE_USER_IPCAM_DEVINFO_REQ;
constexpr auto kFormat = IOTYPE_USER_IPCAM_FORMATEXTSTORAGE_REQ;

/// Keeps what the page would send, and answers from another thread as a camera does.
class Page : public KvTUTKDeviceInfoView {
public:
    explicit Page(KvDevice& device, const Timeouts& timeouts = {}) {
        resize(825, 680);
        show();
        ui = findChild<UI*>();
        setTimeouts(timeouts);
        setDevice(&device);
    }

    void answer(uint32_t request, const QByteArray& bytes) {
        std::thread([&] { handleResponse(KvTUTKResponse(request + 1, bytes)); }).join();
    }
    void answerInfo(uint32_t total, uint32_t free) {
        QByteArray bytes(56, '\0');
        bytes.replace(0, 5, "CAM-X");
        orvelle::test::putU32(bytes, 32, 0xFF0A0001);
        orvelle::test::putU32(bytes, 40, total);
        orvelle::test::putU32(bytes, 44, free);
        answer(kInfo, bytes);
    }
    void answerWifi() {
        QByteArray bytes(101, '\0');
        bytes.replace(0, 4, "home").replace(68, 8, "10.0.0.7").replace(84, 5, "00:11");
        answer(kWifi, bytes);
    }
    /// Without the name.
    QString values() const {
        QStringList all;
        for (int row = UI::kDeviceType; row < UI::kRows; ++row)
            all << ui->value(static_cast<UI::Row>(row));
        return all.join(QLatin1Char(' '));
    }

    UI* ui;
    Types sent;
    QByteArray lastSent;
    bool isOpen = true;

protected:
    bool send(uint32_t type, const QByteArray& bytes) override {
        if (isOpen)
            sent << type;
        lastSent = bytes;
        return isOpen;
    }
};

/// Ends every question with `result` and keeps its words.
struct Answerer : QTimer {
    explicit Answerer(int result) {
        callOnTimeout(this, [this, result] {
            auto* dialog = qobject_cast<KvAlertDialog*>(QApplication::activeModalWidget());
            if (dialog)
                question = dialog->accessibleName();
            if (dialog)
                dialog->done(result);
        });
        start(1);
    }
    QString question;
};

}  // namespace

class DeviceInfoTest : public QObject {
    Q_OBJECT

private slots:
    void answers_fillTheirRows_inAnyOrder() {
        Page page(m_camera);
        QCOMPARE(page.sent, (Types{kWifi, kInfo}));
        QCOMPARE(page.lastSent, QByteArray(4, '\0'));
        QVERIFY(page.ui->isLoading() && !page.ui->cleanupButton()->isEnabled());
        page.answerWifi();
        QTRY_COMPARE(page.values(), QStringLiteral("- - INFOCAMERA1 home 10.0.0.7 00:11 - -"));
        QVERIFY(!page.ui->isLoading() && !page.ui->cleanupButton()->isEnabled());
        page.answerInfo(30000, 0xFFFFFFFF);
        QTRY_COMPARE(page.values(),
                     QStringLiteral("CAM-X 255.10.0.1 INFOCAMERA1 home 10.0.0.7 00:11 0G 29G"));
        QVERIFY(page.ui->cleanupButton()->isEnabled());
        page.answerInfo(0, 1023);
        QTRY_VERIFY(!page.ui->cleanupButton()->isEnabled());
        page.answer(kInfo, QByteArray(33, '\x7f'));
        page.answer(kWifi, QByteArray(1300, 'x'));
        QTRY_COMPARE(page.ui->value(UI::kMacAddress).size(), 64);
    }

    void answerOnItsWay_isForgotten_withItsCamera() {
        Page page(m_camera);
        FakeDevice other(QStringLiteral("OTHER"));
        for (KvDevice* next : {static_cast<KvDevice*>(&other), static_cast<KvDevice*>(nullptr)}) {
            page.answerInfo(30000, 20000);
            page.setDevice(next);
            QCoreApplication::processEvents();
            QCOMPARE(
                page.values(),
                QStringLiteral("- - %1 - - - - -").arg(next ? next->uid() : QStringLiteral("-")));
            QCOMPARE(page.ui->isLoading(), next != nullptr);
        }
    }

    void silence_isTold_andBackStaysFree() {
        Page page(m_camera, {30, 30});
        QSignalSpy back(&page, &Page::clickBackButton);
        const QPoint arrow = page.ui->backButton()->geometry().center();
        QTest::mouseClick(page.ui->childAt(arrow), Qt::LeftButton);
        QTest::keyClick(&page, Qt::Key_Escape);
        QCOMPARE(back.count(), 2);
        QTRY_COMPARE(page.ui->notice(), text("the_camera_does_not_answer"));
        QVERIFY(!page.ui->isLoading());
        page.answerWifi();
        QTRY_VERIFY(page.ui->notice().isEmpty());
    }

    void offlineCamera_isTold_andAskedAgainWhenItComesBack() {
        FakeDevice camera(QStringLiteral("CAM"));
        Page page(camera);
        page.isOpen = false;
        page.setDevice(&camera);
        QCOMPARE(page.ui->notice(), text("camera_offline"));
        page.isOpen = true;
        page.setDevice(&camera);
        page.answerInfo(30000, 20000);
        camera.setState(KvDevice::State::kLost);
        QTRY_COMPARE(page.ui->notice(), text("camera_offline"));
        QVERIFY(!page.ui->isLoading() && !page.ui->cleanupButton()->isEnabled());
        page.sent.clear();
        camera.setState(KvDevice::State::kOnline);
        QTRY_COMPARE(page.sent, (Types{kWifi, kInfo}));
        QVERIFY(page.ui->notice().isEmpty());
    }

    void formatting_isAsked_andItsOutcomeTold_data() {
        QTest::addColumn<int>("choice");
        QTest::addColumn<QByteArray>("answer");  // null: none
        QTest::addColumn<QString>("news");       // empty: not sent
        QTest::newRow("declined") << 0 << QByteArray() << QString();
        QTest::newRow("done") << 1 << QByteArray(8, '\0') << "sdcard_cleanup_success";
        QTest::newRow("failed") << 1 << QByteArray(8, '\1') << "sdcard_cleanup_failed";
        QTest::newRow("torn") << 1 << QByteArray(2, '\0') << "sdcard_cleanup_failed";
        QTest::newRow("no answer") << 1 << QByteArray() << "the_camera_does_not_answer";
    }
    void formatting_isAsked_andItsOutcomeTold() {
        QFETCH(QByteArray, answer);
        QFETCH(QString, news);
        QFETCH(int, choice);
        Page page(m_camera, {60'000, answer.isNull() ? 30 : 60'000});
        page.answerInfo(30000, 100);
        page.answer(kFormat, QByteArray(8, '\0'));  // to nobody's question
        QTRY_VERIFY(page.ui->cleanupButton()->isEnabled());
        page.sent.clear();
        Answerer answerer(choice);
        QPushButton* button = page.ui->cleanupButton();
        QPushButton next(&page);
        next.show();
        button->setFocus();
        button->click();
        QCOMPARE(answerer.question, m_camera.displayName() + QStringLiteral("\n\n") +
                                        text("format_the_card_with_all_its_recordings"));
        // A button that goes off does not hand the keyboard to whatever comes next.
        QCOMPARE(page.focusWidget(), choice == 1 ? static_cast<QWidget*>(&page) : button);
        QCOMPARE(page.ui->isLoading(), choice == 1);
        QCOMPARE(page.sent, choice == 1 ? Types{kFormat} : Types{});
        page.answerWifi();  // late, and no answer to this
        if (!answer.isNull())
            page.answer(kFormat, answer);
        if (news.isEmpty())
            return;
        QTRY_COMPARE(answerer.question, text(qPrintable(news)));
        const bool isDone = news == QLatin1String("sdcard_cleanup_success");
        QCOMPARE(page.sent.mid(1), isDone ? (Types{kWifi, kInfo}) : Types{});
    }

    void unbinding_isAsked_fromThePageInTheGrid() {
        KvDevicesPreview grid;
        grid.resize(825, 680);
        grid.show();
        const auto entry = orvelle::test::entryOf(m_camera, QStringLiteral("Door"));
        grid.setGroup(entry.get());
        KvDevicePlayerView* tile = grid.findChild<KvDevicesPreviewUI*>()->tiles().front();
        emit tile->clickSettingButton(tile);
        const auto* page = grid.findChild<KvTUTKDeviceInfoView*>();
        QCOMPARE(page->geometry(), grid.rect());
        QList<KvDevice*> unbound;
        connect(&grid, &KvDevicesPreview::unbindDevice, this,
                [&](KvDevice* device) { unbound << device; });
        for (const int choice : {0, 1}) {
            const Answerer answerer(choice);
            QTest::keyClick(page->findChild<UI*>()->unbindButton(), Qt::Key_Space);
            QCOMPARE(unbound.count(&m_camera), choice);
        }
        grid.setGroup(nullptr);
        QVERIFY(page->isHidden() && !page->device());
    }

private:
    FakeDevice m_camera{QStringLiteral("INFOCAMERA1")};
};

static const orvelle::test::RegisterSuite<DeviceInfoTest> kDeviceInfoTest;
#include "device_info_test.moc"
