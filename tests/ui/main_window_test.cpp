#include "ui/main/main_window.h"

#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSet>

#include "core/configure.h"
#include "core/file_utils.h"
#include "core/log.h"
#include "device/device_manager.h"
#include "fake_device.h"
#include "link/device_code.h"
#include "support/clerk.h"
#include "support/suites.h"
#include "ui/dialogs/confirm_dialog.h"
#include "ui/dialogs/device_table_model.h"
#include "ui/dialogs/device_table_view.h"
#include "ui/dialogs/input_dialog.h"
#include "ui/list/cameras_view.h"
#include "ui/list/device_search_view.h"
#include "ui/list/list_view.h"
#include "ui/main/guide_view.h"
#include "ui/main/main_window_ui.h"
#include "ui/main/menu_view.h"
#include "ui/main/restart_hook.h"
#include "ui/playback/video_time_line_view.h"
#include "ui/preview/devices_preview.h"
#include "ui/widgets/notice_bar.h"
#include "ui/widgets/text.h"
#include "ui/widgets/toast_view.h"

using orvelle::test::entryOf;
using orvelle::test::FakeDevice;

class MainWindowTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QCoreApplication::setApplicationVersion(QStringLiteral("1.2.3")); }
    void init() {
        QDir(KvFileUtils::dataRoot()).removeRecursively();
        m_manager = KvDeviceManager::create();
    }
    void cleanup() {
        KvConfigure::setWriter(nullptr);
        KvDeviceManager::release();
    }

    void defaultSize_fitsOnSmallScreens() {
        QCOMPARE(MainWindow::defaultSize({1366, 768}), QSize(1087, 728));
        QCOMPARE(MainWindow::defaultSize({1366, 789}), QSize(1118, 749));
        QCOMPARE(MainWindow::defaultSize({1366, 790}), QSize(1120, 750));
        QCOMPARE(MainWindow::defaultSize({1024, 768}), QSize(1024, 728));
        QCOMPARE(MainWindow::defaultSize({1080, 1920}), QSize(1080, 750));
    }

    void guide_isShownOnce() {
        for (const bool expected : {true, false}) {
            MainWindow window;
            const auto* guide = window.findChild<KvGuideView*>();
            QCOMPARE(guide != nullptr, expected);
            if (!guide)
                continue;
            window.show();
            QTest::keyClick(guide->findChild<QPushButton*>(), Qt::Key_Escape);
            QTRY_VERIFY(!window.findChild<KvGuideView*>());
        }
    }

    void entry_opensByClick_andEveryChangeLeadsBackToTheWelcomePage() {
        addEntry();
        MainWindow window;
        const auto* ui = window.findChild<MainWindowUI*>();
        QVERIFY(ui->areCamerasShown() && !ui->isPreviewShown());
        KvDeviceGroup* entry = m_manager->groups().first();
        emit ui->cameras()->clickDevice(entry);
        QTRY_VERIFY(ui->isPreviewShown());
        QCOMPARE(ui->preview()->group(), entry);
        QVERIFY(ui->welcomePage()->isHidden());
        ui->preview()->closePreview();
        QVERIFY(!ui->isPreviewShown() && !ui->welcomePage()->isHidden());
        QCOMPARE(window.focusWidget(), ui->cameras()->findChild<KvListView*>());
        // A click that was queued before its entry went away.
        emit ui->cameras()->clickDevice(entry);
        QVERIFY(m_manager->removeGroup(entry));
        emit m_manager->listChanged();
        QCoreApplication::processEvents();
        QVERIFY(!ui->isPreviewShown() && !ui->areCamerasShown());
    }

    void newCode_isRefusedForAnotherCamera_withTheReason() {
        addEntry();
        MainWindow window;
        window.show();
        const auto* ui = window.findChild<MainWindowUI*>();
        QStringList reasons;
        QTimer::singleShot(0, &window, [&] {
            auto* dialog = window.findChild<KvInputDialog*>();
            for (const std::string& code :
                 {orvelle::encodeDeviceCode("OTHERCAM", "a password"), std::string("no code")}) {
                dialog->setText(QString::fromStdString(code));
                QTest::keyClick(dialog->findChild<QLineEdit*>(), Qt::Key_Return);
                reasons += dialog->findChild<QLineEdit*>()->accessibleDescription();
            }
            dialog->reject();
        });
        emit ui->preview()->enterCode(m_manager->devicesSnapshot().first());
        QCOMPARE(reasons, QStringList({orvelle::text("this_code_is_of_another_camera"),
                                       orvelle::text("device_code_error_please_bind_the_device_on_"
                                                     "mobile_phone_first")}));
    }

    void typedCode_isKept_untilItIsTaken() {
        addEntry();
        MainWindow window;
        window.show();
        const auto* ui = window.findChild<MainWindowUI*>();
        const QString typed = QStringLiteral("no code");
        QStringList seen;
        QTimer user;
        user.callOnTimeout(&window, [&] {
            auto* front = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (auto* input = qobject_cast<KvInputDialog*>(front)) {
                seen += input->text();
                input->setText(typed);
                seen.size() % 2 == 1 ? input->accept() : input->reject();
            } else if (front) {
                front->reject();
            }
        });
        user.start(5);
        emit ui->cameras()->clickAddDevice();
        QCOMPARE(seen, QStringList({QString(), typed}));
        emit ui->welcomePage()->clickSearchButton(typed);
        QCOMPARE(ui->welcomePage()->findChild<QLineEdit*>()->text(), typed);
    }

    void language_isStoredAndRestarts() {
        int restarts = 0;
        orvelle::setRestartHook([&restarts] { ++restarts; });
        MainWindow window;
        window.findChild<KvGuideView*>()->hide();
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        window.findChild<MainWindowUI*>()->helpButton()->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QCOMPARE(window.focusWidget(), window.findChild<MainWindowUI*>()->helpButton());
        QTest::keyClick(window.focusWidget(), Qt::Key_Return);
        // Round the menu and into the languages, of which the second is Chinese.
        for (const Qt::Key key :
             {Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_Right, Qt::Key_Down, Qt::Key_Return})
            QTest::keyClick(QApplication::focusWidget(), key);
        QTRY_COMPARE(restarts, 1);
        orvelle::setRestartHook({});
        QCOMPARE(KvConfigure().getString(orvelle::settings::kLanguage, {}),
                 QStringLiteral("chinese"));
    }

    void log_isWritten_untilItIsChosenAgain() {
        MainWindow window;
        QFile file(KvFileUtils::logFilePath());
        orvelle::test::Clerk clerk;
        for (const bool isOn : {true, false}) {
            emit window.findChild<KvMenuView*>()->clickLog();
            qDebug("while it is %s", isOn ? "on" : "off");
            QCOMPARE(orvelle::isLogEnabled(), isOn);
        }
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray lines = file.readAll();
        QVERIFY(lines.contains("while it is on\n") && !lines.contains("while it is off"));
        // One that cannot be written is told.
        QVERIFY(file.remove() && QDir().mkdir(file.fileName()));
        emit window.findChild<KvMenuView*>()->clickLog();
        QCOMPARE(clerk.seen, QStringList({QStringLiteral("KvDirectoryDialog"),
                                          QStringLiteral("KvAlertDialog")}));
        QCOMPARE(clerk.questions, QStringList(orvelle::text("the_log_cannot_be_written")));
        QVERIFY(QDir().rmdir(file.fileName()));
    }

    void unsavedEntry_isTold_data() {
        QTest::addColumn<QString>("file");
        QTest::newRow("new") << QString();
        QTest::newRow("in a file of another name") << QStringLiteral("/odd.xml");
    }
    void unsavedEntry_isTold() {
        QFETCH(QString, file);
        auto entry = entryOf(addCamera(), QStringLiteral("Door"));
        const QString folder = KvFileUtils::devicesPath(QStringLiteral("KvTUTKGroup"));
        if (!file.isEmpty()) {
            QVERIFY(entry->save());
            QFile::rename(folder + QStringLiteral("/WINDOWCAM1.xml"), folder + file);
            entry = std::move(KvDeviceGroup::loadAll(folder).front());
        }
        QVERIFY(QDir(folder).removeRecursively());
        QVERIFY(QFile(folder).open(QIODevice::WriteOnly));
        const MainWindow window;
        QVERIFY(m_manager->addGroup(std::move(entry)));
        QTRY_VERIFY(window.findChild<KvToastView*>());
    }

    void whatWentWrongWithoutAWindow_isToldByTheNextOne() {
        KvConfigure::setWriter(&m_manager->fileWriter());
        for (int i = 0; i <= KvDeviceManager::kMaxDevices; ++i)
            m_manager->addDevice(std::make_unique<FakeDevice>(QStringLiteral("MANY%1").arg(i)));
        {
            MainWindow window;
            QVERIFY(notices(window).contains(orvelle::text("more_than_32_cameras_are_listed")));
            m_manager->finishWrites();
            QVERIFY(QDir(KvFileUtils::configurePath()).removeRecursively());
            QVERIFY(QFile(KvFileUtils::dataRoot() + QStringLiteral("/configure"))
                        .open(QIODevice::WriteOnly));
            QMetaObject::invokeMethod(&window, "_onClickLanguage",
                                      Q_ARG(QString, QStringLiteral("english")));
            m_manager->finishWrites();
            QCoreApplication::processEvents();
            QVERIFY(!window.findChild<KvToastView*>());
        }
        const MainWindow window;
        QTRY_VERIFY(window.findChild<KvToastView*>());
        QCOMPARE(KvConfigure().getString(orvelle::settings::kLanguage, {}),
                 QStringLiteral("english"));
    }

    void tab_reachesEveryButton() {
        addEntry();
        MainWindow window;
        QVERIFY(areButtonsReached(window));
        KvVideoTimeLineView timeLine;
        QVERIFY(areButtonsReached(timeLine));
    }

    void buttons_haveNames() {
        const MainWindow window;
        for (const QPushButton* button : window.findChildren<QPushButton*>()) {
            if (button->focusPolicy() & Qt::TabFocus)
                QVERIFY2(!button->text().isEmpty() || !button->accessibleName().isEmpty(),
                         qPrintable(button->styleSheet()));
        }
    }

    void place_isGivenBack_afterFullScreen() {
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const QRect before(window.pos() + QPoint(30, 20), window.size() + QSize(40, 10));
        window.setGeometry(before);
        QTRY_COMPARE(window.geometry(), before);
        auto* preview = window.findChild<KvDevicesPreview*>();
        emit preview->requestFullscreen(true);
        QTRY_COMPARE(window.size(), window.screen()->size());
        emit preview->requestFullscreen(false);
        QTRY_COMPARE(window.geometry(), before);
        auto* ui = window.findChild<MainWindowUI*>();
        ui->maximiseButton()->click();
        QTRY_VERIFY(window.isMaximized() && window.width() > before.width());
        emit preview->requestFullscreen(true);
        QTRY_VERIFY(window.isFullScreen());
        emit preview->requestFullscreen(false);
        QTRY_VERIFY(window.isMaximized());
        ui->maximiseButton()->click();
        QTRY_COMPARE(window.geometry(), before);
    }

    void closing_asksOnce_andGoesOnWhenDeclined() {
        addEntry();
        MainWindow window;
        window.show();
        int questions = 0;
        QTimer::singleShot(0, &window, [&] {
            window.findChild<MainWindowUI*>()->closeButton()->click();
            questions = window.findChildren<KvConfirmDialog*>().size();
            window.findChild<KvConfirmDialog*>()->reject();
        });
        QVERIFY(!window.close());
        QCOMPARE(questions, 1);
        QVERIFY(window.isVisible() && m_manager->devicesSnapshot().size() == 1);
    }

    void searchTable_headerAndRowsFollowEachOther() {
        KvTUTKDeviceTableView table;
        KvDeviceTableModel* model = table.devices();
        model->setDevices(std::vector<orvelle::CameraRecord>(2));
        auto* header = static_cast<KvDeviceHeaderView*>(table.horizontalHeader());
        const QPoint box(header->sectionViewportPosition(0) + 5, 5);
        // Two states from the rows, then one click each on the box.
        model->setData(model->index(0, 0), Qt::Checked, Qt::CheckStateRole);
        QCOMPARE(model->allChecked(), Qt::PartiallyChecked);
        for (const auto state : {Qt::Checked, Qt::Unchecked}) {
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, box);
            QCOMPARE(model->allChecked(), state);
        }
    }

private:
    static bool areButtonsReached(QWidget& window) {
        if (auto* guide = window.findChild<KvGuideView*>())
            guide->hide();
        window.show();
        if (!QTest::qWaitForWindowActive(&window))
            return false;
        QSet<QPushButton*> missing;
        for (QPushButton* button : window.findChildren<QPushButton*>()) {
            if (button->isVisible() && (button->focusPolicy() & Qt::TabFocus))
                missing += button;
        }
        for (int keys = 2 * missing.size() + 10; keys > 0; --keys) {
            QTest::keyClick(&window, Qt::Key_Tab);
            missing.remove(qobject_cast<QPushButton*>(window.focusWidget()));
        }
        for (const QPushButton* button : qAsConst(missing))
            qWarning() << button->accessibleName() << "is out of reach";
        return missing.isEmpty();
    }

    static QString notices(const MainWindow& window) {
        QString texts;
        for (const orvelle::NoticeBar* bar : window.findChildren<orvelle::NoticeBar*>())
            texts += bar->text();
        return texts;
    }

    KvDevice& addCamera() {
        auto device = std::make_unique<FakeDevice>(QStringLiteral("WINDOWCAM1"));
        KvDevice& camera = *device;
        m_manager->addDevice(std::move(device));
        return camera;
    }
    void addEntry() { QVERIFY(m_manager->addGroup(entryOf(addCamera(), QStringLiteral("Door")))); }

    KvDeviceManager* m_manager = nullptr;
};

static orvelle::test::RegisterSuite<MainWindowTest> s_suite;

#include "main_window_test.moc"
