#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>

#include "device/device_manager.h"
#include "support/suites.h"
#include "ui/fake_device.h"
#include "ui/list/device_group_remove_adapter.h"
#include "ui/list/device_group_select_dialog.h"
#include "ui/list/device_group_select_dialog_ui.h"
#include "ui/list/list_view.h"
#include "ui/list/lv_item_view.h"
#include "ui/widgets/text.h"
#include "ui/widgets/toast_view.h"

using orvelle::test::FakeDevice;

class GroupDialogTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        KvDeviceManager* manager = KvDeviceManager::create();
        for (int i = 0; i < 18; ++i) {
            auto device = std::make_unique<FakeDevice>(QStringLiteral("CHOICE%1").arg(i));
            m_devices.append(device.get());
            manager->addDevice(std::move(device));
            auto entry = orvelle::test::entryOf(*m_devices.last(), QStringLiteral("Camera"));
            entry->setGroupIndex(i);
            QVERIFY(manager->addGroup(std::move(entry)));
        }
    }
    void cleanupTestCase() {
        for (KvDeviceGroup* entry : KvDeviceManager::instance()->groups())
            entry->removeFile();
        KvDeviceManager::release();
    }

    void group_getsItsMembersAndARoomyLayout_data() {
        QTest::addColumn<int>("cameras");
        QTest::addColumn<int>("layout");
        const int cases[][2] = {{2, 1}, {4, 1},  {5, 3},  {6, 3},  {7, 2},
                                {9, 2}, {10, 4}, {13, 4}, {14, 5}, {16, 5}};
        for (const auto& [cameras, layout] : cases)
            QTest::addRow("%d", cameras) << cameras << layout;
    }
    void group_getsItsMembersAndARoomyLayout() {
        QFETCH(int, cameras);
        QFETCH(int, layout);
        open(nullptr);
        m_ui->nameEdit()->setText(QStringLiteral("  House ") + QString(20, QChar(0x5bb6)));
        for (int i = cameras - 1; i >= 0; --i)
            click(i);
        m_ui->okButton()->click();
        QCOMPARE(m_dialog->result(), 1);
        const auto group = m_dialog->takeGroup();
        QVERIFY(group && group->type() == KvDeviceGroup::kGroup && group->groupId() == -1);
        QCOMPARE(group->name(), QStringLiteral("House ") + QString(6, QChar(0x5bb6)));
        QCOMPARE(group->layout(), layout);
        QCOMPARE(group->devices().size(), cameras);
        QCOMPARE(group->firstDevice(), m_devices[cameras - 1]);
    }

    void seventeenth_isRefused() {
        open(nullptr);
        for (int i = 0; i < 17; ++i)
            click(i);
        QCOMPARE(toast(), orvelle::text("support_16_devices_at_most"));
        QVERIFY(isChosen(15) && !isChosen(16));
        QCOMPARE(m_ui->chosenAdapter()->getCount(), 16);
        QVERIFY(m_ui->counter()->text().endsWith(QStringLiteral(" : 16/16")));
        click(3);
        click(16);
        QVERIFY(isChosen(16) && !isChosen(3));
    }

    void ok_isRefused_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("cameras");
        QTest::addColumn<QString>("key");
        for (const char* name : {"", "   "})
            QTest::newRow(name) << name << 2 << "please_input_group_name";
        for (const int cameras : {0, 1})
            QTest::addRow("%d", cameras) << "House" << cameras << "select_two_camera_at_least";
    }
    void ok_isRefused() {
        QFETCH(QString, name);
        QFETCH(int, cameras);
        QFETCH(QString, key);
        open(nullptr);
        m_ui->nameEdit()->setText(name);
        for (int i = 0; i < cameras; ++i)
            click(i);
        m_ui->okButton()->click();
        QCOMPARE(toast(), KvLanguage::getString(key));
        QVERIFY(m_dialog->isVisible() && !m_dialog->takeGroup());
    }

    void editedGroup_startsAsItIs_andIsLeftAlone() {
        const auto group = orvelle::test::groupOf({m_devices[7], m_devices[2], m_devices[5]},
                                                  QStringLiteral("Old"));
        open(group.get());
        QCOMPARE(m_ui->nameEdit()->text(), QStringLiteral("Old"));
        QVERIFY(isChosen(7) && isChosen(2) && isChosen(5) && !isChosen(0));
        auto* middle = m_ui->chosenList()->itemViews().at(1);
        QVERIFY(middle->findChild<QPushButton*>());
        middle->findChild<QPushButton*>()->click();
        QVERIFY(!isChosen(2));
        click(0);
        QVERIFY(m_ui->chosenList()->itemViews().at(1)->handleKey(Qt::Key_Delete));
        QVERIFY(!isChosen(5));
        m_ui->okButton()->click();
        QCOMPARE(m_dialog->takeGroup()->devices(), QList<KvDevice*>({m_devices[7], m_devices[0]}));
        QCOMPARE(group->devices().size(), 3);
    }

    void cleanup() { m_dialog.reset(); }

private:
    void open(KvDeviceGroup* group) {
        m_dialog = std::make_unique<KvDeviceGroupSelectDialog>(group, nullptr);
        m_ui = m_dialog->findChild<KvDeviceGroupSelectDialogUI*>();
        m_dialog->show();
    }
    // Items that are far from the screen do not exist.
    KvLVItemView* camera(int index) const {
        KvListView* list = m_ui->cameraList();
        list->verticalScrollBar()->setValue(index * list->widget()->height() / 17);
        return list->itemView(index);
    }
    bool isChosen(int index) const { return camera(index)->isSelected(); }
    void click(int index) const { emit camera(index)->clickItemView(camera(index)); }
    QString toast() const {
        const auto* view = m_dialog->findChild<KvToastView*>();
        return view ? view->findChild<QLabel*>()->text() : QString();
    }

    QList<KvDevice*> m_devices;
    std::unique_ptr<KvDeviceGroupSelectDialog> m_dialog;
    KvDeviceGroupSelectDialogUI* m_ui = nullptr;
};

static const orvelle::test::RegisterSuite<GroupDialogTest> kGroupDialogTest;
#include "group_dialog_test.moc"
