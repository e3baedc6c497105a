#include "ui/list/cameras_view.h"

#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>

#include "core/file_utils.h"
#include "support/suites.h"
#include "ui/fake_device.h"
#include "ui/list/cameras_view_ui.h"
#include "ui/list/device_group_pop_menu.h"
#include "ui/list/device_search_view.h"
#include "ui/list/device_state_text.h"
#include "ui/list/list_view.h"
#include "ui/list/mode_menu.h"
#include "ui/list/tutk_group_view.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/text.h"

using orvelle::DeviceState;
using orvelle::test::entryOf;
using orvelle::test::FakeDevice;
using orvelle::test::groupOf;

class CamerasViewTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        const char* const names[] = {"Door", "Garage", "Attic"};
        for (const char* name : names) {
            const QString text = QLatin1String(name);
            m_devices.push_back(std::make_unique<FakeDevice>(text.toUpper()));
            m_entries.push_back(entryOf(*m_devices.back(), text));
        }
        m_entries.insert(m_entries.begin() + 1, groupOf({m_devices[0].get(), m_devices[1].get()},
                                                        QStringLiteral("Doors")));
        m_view = std::make_unique<KvCamerasView>();
        m_view->resize(210, 600);
        m_ui = m_view->findChild<KvCamerasViewUI*>();
        m_view->show();
        m_view->setGroups(entries());
    }
    void cleanup() {
        m_view.reset();
        m_entries.clear();
        m_devices.clear();
    }

    void shownEntries_areThoseOfModeAndFilter_data() {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("shown");
        const char* const cases[][3] = {{"0", "", "Door Doors Garage Attic"},
                                        {"1", "", "Door Garage Attic"},
                                        {"2", "", "Doors"},
                                        {"0", "dOOr", "Door Doors"},
                                        {"1", "door", "Door"},
                                        {"0", ".", ""}};
        for (const auto& [mode, filter, shown] : cases)
            QTest::addRow("%s %s", mode, filter) << *mode - '0' << filter << shown;
    }
    void shownEntries_areThoseOfModeAndFilter() {
        QFETCH(int, mode);
        QFETCH(QString, filter);
        QFETCH(QString, shown);
        const char* const titles[] = {"All cameras", "Single cameras", "Groups"};
        const char* const names[] = {"Door Doors Garage Attic", "Door Garage Attic", "Doors"};
        m_view->setMode(mode);
        m_ui->filter()->setText(filter);
        QCOMPARE(shownNames(), shown);
        m_view->setGroups(entries());
        QVERIFY(m_ui->filter()->text().isEmpty());
        QCOMPARE(shownNames(), QLatin1String(names[mode]));
        QCOMPARE(m_ui->title()->text(), QLatin1String(titles[mode]));
    }

    void emptyList_saysWhy() {
        QVERIFY(m_ui->notice()->isHidden() && !m_ui->list()->isHidden());
        m_ui->filter()->setText(QStringLiteral("nowhere"));
        QVERIFY(!m_ui->notice()->isHidden() && m_ui->list()->isHidden());
        QCOMPARE(m_ui->notice()->text(), orvelle::text("nothing_found"));
        m_view->setMode(KvCamerasView::kGroups);
        QVERIFY(m_ui->notice()->isHidden());
        m_view->setGroups({m_entries[0].get()});
        QCOMPARE(m_ui->notice()->text(), orvelle::text("no_groups_yet"));
        m_view->setGroups({});
        QVERIFY(m_ui->notice()->text().startsWith(QStringLiteral("No cameras yet")));
    }

    void modeMenu_offersTheOtherTwo_andCloses() {
        show();
        orvelle::ModeMenu* menu = m_ui->modeMenu();
        QTest::mouseClick(m_ui->title(), Qt::LeftButton);
        QVERIFY(menu->isVisible());
        QTest::mouseClick(m_ui->title(), Qt::LeftButton);
        QVERIFY(!menu->isVisible());
        QTest::mouseClick(m_ui->title(), Qt::LeftButton);
        QTest::keyClick(menu->labels().front(), Qt::Key_Down);
        QTest::keyClick(menu->labels().back(), Qt::Key_Return);
        QVERIFY(!menu->isVisible() && m_view->mode() == KvCamerasView::kGroups);
        QTest::mouseClick(m_ui->title(), Qt::LeftButton);
        QCOMPARE(menu->labels().front()->text(), orvelle::text("all_cameras"));
        QTest::keyClick(menu->labels().front(), Qt::Key_Escape);
        QVERIFY(!menu->isVisible() && m_ui->title()->hasFocus());
        QTest::mouseClick(m_ui->title(), Qt::LeftButton);
        QTest::mouseClick(m_ui->filter(), Qt::LeftButton);
        QVERIFY(!menu->isVisible());
    }

    void signals_carryTheEntry() {
        QSignalSpy clicked(m_view.get(), &KvCamerasView::clickDevice);
        QSignalSpy menu(m_view.get(), &KvCamerasView::rightClickDevice);
        QSignalSpy edit(m_view.get(), &KvCamerasView::clickDeviceEdit);
        KvLVItemView* group = item(1);
        emit group->clickItemView(group);
        emit group->rightClickItemView(group, 3, 4);
        for (int i = 0; i < 4; ++i) {
            if (auto* button = item(i)->findChild<QPushButton*>())
                button->click();
        }
        QCOMPARE(clicked.value(0).value(0).value<KvDeviceGroup*>(), m_entries[1].get());
        QCOMPARE(menu.value(0).value(0).value<KvDeviceGroup*>(), m_entries[1].get());
        QCOMPARE(edit.count(), 3);  // the group and its two cameras
        QCOMPARE(edit.value(2).value(0).value<KvDeviceGroup*>(), m_entries[2].get());
        QVERIFY(item(1)->handleKey(Qt::Key_F2) && !item(3)->handleKey(Qt::Key_F2));
        QCOMPARE(edit.count(), 4);
    }

    void highlight_staysWithItsEntry_untilANewList() {
        emit item(2)->clickItemView(item(2));
        m_ui->filter()->setText(QStringLiteral("gar"));
        QVERIFY(item(0)->isSelected());
        m_view->setMode(KvCamerasView::kSingleCameras);
        QVERIFY(item(1)->isSelected());
        m_view->selectGroup(m_entries[3].get());
        QVERIFY(!item(1)->isSelected() && item(2)->isSelected());
        m_view->setGroups(entries());
        QVERIFY(!item(2)->isSelected());
    }

    void update_showsTheEntryAnew_andItsRelatives() {
        m_entries[0]->setName(QStringLiteral("Gate"));
        m_view->updateGroup(m_entries[0].get());
        QVERIFY(item(0)->accessibleName().startsWith(QStringLiteral("Gate")));
        m_entries[1]->setDevices({m_devices[0].get(), m_devices[2].get()});
        m_view->updateGroup(m_entries[1].get());
        QVERIFY(!item(2)->handleKey(Qt::Key_F2) && item(3)->handleKey(Qt::Key_F2));
        const auto stranger = entryOf(*m_devices[0], QStringLiteral("Stranger"));
        m_view->updateGroup(stranger.get());
        m_view->updateGroup(nullptr);
    }

    void states_areFollowed() {
        m_view->show();
        const std::pair<DeviceState, const char*> refusals[] = {
            {DeviceState::kWrongPassword, "Garage, Wrong password"},
            {DeviceState::kWrongVersion, "Garage, Incompatible version"},
            {DeviceState::kFull, "Garage, Too many viewers"},
            {DeviceState::kRefusedForNow, "Garage, Refused for now"},
            {DeviceState::kRefused, "Garage, Connection refused"},
        };
        for (const auto& [state, name] : refusals) {
            m_devices[1]->setState(state);
            QTRY_COMPARE(item(2)->accessibleName(), QLatin1String(name));
            const bool isPassword = state == DeviceState::kWrongPassword;
            QCOMPARE(orvelle::needsNewCode(*m_entries[2]), isPassword);
            QVERIFY(!orvelle::needsNewCode(*m_entries[1]));
        }
        QCOMPARE(item(1)->accessibleName(), QStringLiteral("Doors, 1/2"));
        m_devices[1]->setState(DeviceState::kTimedOut);
        QTRY_COMPARE(item(2)->accessibleName(), QStringLiteral("Garage, Unreachable"));
        QCOMPARE(item(0)->accessibleName(), QStringLiteral("Door, Online"));
    }

    void deadEntries_areLeftOut() {
        show();
        QSignalSpy clicked(m_view.get(), &KvCamerasView::clickDevice);
        m_entries.erase(m_entries.begin());
        m_view->repaint();
        emit item(0)->clickItemView(item(0));
        QVERIFY(clicked.isEmpty());
        m_view->setMode(KvCamerasView::kAllCameras);
        QCOMPARE(shownNames(), QStringLiteral("Doors Garage Attic"));
    }

    void longList_asksOnlyForThePicturesInView() {
        QList<KvDeviceGroup*> many;
        for (int i = 0; i < 200; ++i) {
            const QString uid = QStringLiteral("LAZY%1").arg(i);
            m_devices.push_back(std::make_unique<FakeDevice>(uid));
            m_entries.push_back(entryOf(*m_devices.back(), QString(10000, QLatin1Char('n'))));
            many.append(m_entries.back().get());
        }
        m_view->setGroups(many);
        show();
        const QDir cache(KvFileUtils::cachePath());
        const QStringList pattern{QStringLiteral("LAZY*")};
        QTRY_VERIFY(!cache.entryList(pattern, QDir::Dirs).isEmpty());
        QVERIFY(cache.entryList(pattern, QDir::Dirs).size() < 10);
    }

    void popMenu_reportsTheGroup_whileThereIsOne() {
        KvDeviceGroupPopMenu menu;
        menu.open({});
        QSignalSpy chosen(&menu, &KvDeviceGroupPopMenu::clickDeviceGroup);
        auto group = groupOf({}, QStringLiteral("Rock & roll"));
        KvDeviceGroupAction action(group.get(), nullptr);
        connect(&action, &KvDeviceGroupAction::clickDeviceGroup, &menu,
                &KvDeviceGroupPopMenu::clickDeviceGroup);
        QCOMPARE(action.text(), QStringLiteral("Rock && roll"));
        action.trigger();
        QCOMPARE(chosen.value(0).value(0).value<KvDeviceGroup*>(), group.get());
        group.reset();
        action.trigger();
        QCOMPARE(chosen.count(), 1);
    }

    void welcomePage_reportsTheCode() {
        KvDeviceSearchView page;
        QSignalSpy added(&page, &KvDeviceSearchView::addDevice);
        QSignalSpy searched(&page, &KvDeviceSearchView::clickSearchButton);
        auto* field = page.findChild<QLineEdit*>();
        QTest::keyClicks(field, QStringLiteral("ab-12 cd"));
        QTest::keyClick(field, Qt::Key_Return);
        field->actions().last()->trigger();
        QCOMPARE(added.value(0).value(0).toString(), QStringLiteral("ab-12 cd"));
        QCOMPARE(searched.value(0).value(0).toString(), QStringLiteral("ab-12 cd"));
        page.clear();
        QVERIFY(field->text().isEmpty());
    }

private:
    void show() {
        m_view->show();
        QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    }
    QList<KvDeviceGroup*> entries() const {
        QList<KvDeviceGroup*> list;
        for (const auto& entry : m_entries)
            list.append(entry.get());
        return list;
    }
    KvLVItemView* item(int index) const { return m_ui->list()->itemViews().at(index); }
    QString shownNames() const {
        QStringList names;
        for (const KvLVItemView* view : m_ui->list()->itemViews())
            names += view->accessibleName().section(QLatin1Char(','), 0, 0);
        return names.join(QLatin1Char(' '));
    }

    std::vector<std::unique_ptr<FakeDevice>> m_devices;
    std::vector<std::unique_ptr<KvDeviceGroup>> m_entries;
    std::unique_ptr<KvCamerasView> m_view;
    KvCamerasViewUI* m_ui = nullptr;
};

static const orvelle::test::RegisterSuite<CamerasViewTest> kCamerasViewTest;
#include "cameras_view_test.moc"
