#include "device/device_manager.h"

#include <QPointer>

#include <array>
#include <thread>
#include <vector>

#include "device/device_search_thread.h"
#include "support/suites.h"
#include "support/test_camera.h"
#include "test_tools.h"

using orvelle::DeviceState;
using orvelle::test::deviceFor;
using orvelle::test::TestCamera;

namespace {

const QString kUid = QStringLiteral("MANAGERCAM1");

class DeviceManagerTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        QDir(KvFileUtils::dataRoot()).removeRecursively();
        m_manager = KvDeviceManager::create();
        m_manager->setTiming({200, 20});
    }
    void cleanup() {
        KvDeviceManager::release();
        QVERIFY(!KvDeviceManager::instance());
        qunsetenv("ORVELLE_LINK_UNBOUNDED");
        qunsetenv("ORVELLE_CAMERA_ADDRESSES");
    }

    void devices_changeHands_onlyWhenAddedOrRemoved() {
        QVERIFY(m_manager->addDevice(deviceFor(kUid)));
        KvDevice* const listed = m_manager->findDevice(kUid);
        std::unique_ptr<KvDevice> twin = deviceFor(kUid);
        QVERIFY(!m_manager->addDevice(std::move(twin)) && twin);
        QVERIFY(m_manager->contains(twin.get(), true) && !m_manager->removeDevice(twin.get()));
        QVERIFY(m_manager->addGroup(std::make_unique<KvDeviceGroup>(listed)));
        const KvDeviceGroup* group = m_manager->groups().first();
        QCOMPARE(m_manager->removeDevice(listed).get(), listed);
        QVERIFY(!group->firstDevice() && group->uids() == QStringList(kUid));
        QVERIFY(m_manager->addDevice(std::move(twin)));
        m_manager->resolveMembers();
        QVERIFY(group->firstDevice());
        m_manager->clearDevices();
        QVERIFY(!group->firstDevice());
    }

    void views_neverWait_whileAnAttemptHangs_andStoppingCutsIt() {
        orvelle::test::hangAttemptsOn({kUid});
        m_manager->addDevice(deviceFor(kUid));
        m_manager->start({});
        KvDevice* const device = m_manager->findDevice(kUid);
        for (int round = 0; round < 2; ++round) {
            QTRY_COMPARE(device->state(), DeviceState::kConnecting);
            QVERIFY(m_manager->contains(device, false) && m_manager->groups().isEmpty());
            QCOMPARE(m_manager->devicesSnapshot(), QList<KvDevice*>({device}));
            // Whoever stops it may rely on its end, whoever else stops it at the same time.
            std::array<DeviceState, 3> seen{};
            std::vector<std::thread> stoppers;
            for (DeviceState& state : seen) {
                stoppers.emplace_back([this, device, &state] {
                    m_manager->stopInitThread();
                    state = device->state();
                });
            }
            for (std::thread& stopper : stoppers)
                stopper.join();
            for (const DeviceState state : seen)
                QCOMPARE(state, DeviceState::kCancelled);
            m_manager->startInitThread();
        }
        QTRY_COMPARE(device->state(), DeviceState::kConnecting);
    }

    void camera_isConnectedAgain_whenItRestarts() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        // An hour's pause, which only the lost session ends early.
        m_manager->setTiming({3600 * 1000, 1500});
        m_manager->addDevice(deviceFor(kUid));
        m_manager->start({});
        const KvDevice* device = m_manager->findDevice(kUid);
        for (int round = 0; round < 3; ++round) {
            QTRY_VERIFY_WITH_TIMEOUT(device->isOnline(), 20000);
            camera.stop();
            QTRY_VERIFY(!device->isOnline());
            QVERIFY(camera.start());
        }
    }

    void mediaFolder_saysWhoseItIs_andFollowsTheName() {
        const QString folder = KvFileUtils::mediaPath(kUid);
        const QString label = folder + QStringLiteral("/Camera.txt");
        m_manager->addDevice(deviceFor(kUid));
        KvDevice* const device = m_manager->findDevice(kUid);
        const auto text = [&label] {
            QFile file(label);
            return file.open(QIODevice::ReadOnly | QIODevice::Text) ? file.readAll() : QByteArray();
        };
        for (const char* name : {"Gate", "\xE9\x99\xA2"}) {
            device->setName(QString::fromUtf8(name));
            m_manager->nameMediaFolder(*device);
            QTRY_COMPARE(text(), QByteArray(name) + "\nMANAGERCAM1\n");
        }
        // A folder that is not there is not made, and one that cannot be written harms nobody.
        QVERIFY(QDir(folder).removeRecursively());
        m_manager->nameMediaFolder(*device);
        KvDeviceManager::release();
        QVERIFY(!QFile::exists(folder));
    }

    void search_isCutShort_whenLeftBehind() {
        auto search = std::make_unique<TUTKDeviceSearchThread>(60000);
        const QPointer<KvThread> running(search.get());
        search->start();
        m_manager->reaper().take(std::move(search), this);
        QTRY_VERIFY(!running);
    }

    void sixteenCameras_areFoundConnectedAndClosed() {
        std::vector<std::unique_ptr<TestCamera>> cameras;
        for (int i = 0; i < 16; ++i) {
            const QString uid = QStringLiteral("SEARCHED%1").arg(i);
            cameras.push_back(std::make_unique<TestCamera>(uid));
            QVERIFY(cameras.back()->start());
            m_manager->addDevice(deviceFor(uid));
        }
        std::vector<orvelle::CameraRecord> found;
        QCOMPARE(m_manager->lanSearch(found, 1500), 16);
        QCOMPARE(found.back().name, QStringLiteral("Test camera"));
        m_manager->start({});
        for (const KvDevice* device : m_manager->devicesSnapshot())
            QTRY_VERIFY_WITH_TIMEOUT(device->isOnline(), 30000);
        m_manager->stopInitThread();
        m_manager->clearDevices();
        for (const auto& camera : cameras)
            QTRY_COMPARE(camera->clients(), 0);
    }

private:
    KvDeviceManager* m_manager = nullptr;
};

const orvelle::test::RegisterSuite<DeviceManagerTest> kRegistered;

}  // namespace

#include "device_manager_test.moc"
