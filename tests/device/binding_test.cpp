#include <QSignalSpy>

#include <thread>

#include "device/device_add_thread.h"
#include "device/device_manager.h"
#include "device/device_remove_thread.h"
#include "link/device_code.h"
#include "support/suites.h"
#include "support/test_camera.h"
#include "test_tools.h"

using orvelle::DeviceState;
using orvelle::test::TestCamera;
using Adder = KvTUTKDeviceTryConnectThread;

namespace {

const QString kUid = QStringLiteral("BINDCAM1");

QString codeOf(const char* password = "right") {
    return QString::fromStdString(orvelle::encodeDeviceCode(kUid.toStdString(), password));
}

int outcomeOf(Adder& adder) {
    QSignalSpy spy(&adder, &Adder::updateDeviceStatusSignal);
    adder.start();
    return spy.wait(30000) ? spy.first().first().toInt() : -99;
}

class BindingTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        QDir(KvFileUtils::dataRoot()).removeRecursively();
        m_manager = KvDeviceManager::create();
        m_manager->setTiming({200, 20});
        m_manager->start({});
    }
    void cleanup() {
        KvDeviceManager::release();
        qunsetenv("ORVELLE_LINK_UNBOUNDED");
        qunsetenv("ORVELLE_CAMERA_ADDRESSES");
    }

    void code_bindsOnlyWhatAnswersToIt() {
        const std::tuple<bool, QString, int, DeviceState> cases[] = {
            {true, {}, Adder::kFailed, DeviceState::kNeverTried},
            {true, codeOf("wrong"), Adder::kFailed, DeviceState::kWrongPassword},
            {false, codeOf(), Adder::kFailed, DeviceState::kUnreachable},
            {true, QLatin1Char(' ') + codeOf().toLower(), Adder::kAdded, DeviceState::kNeverTried},
        };
        for (const auto& [isOn, code, status, failure] : cases) {
            TestCamera camera(kUid);
            QVERIFY(!isOn || camera.start());
            Adder adder(code);
            QCOMPARE(outcomeOf(adder), status);
            QCOMPARE(adder.failure(), failure);
            const bool added = status == Adder::kAdded;
            QVERIFY(m_files.has("BINDCAM1") == added && m_entries.has("BINDCAM1") == added);
            if (!added)
                continue;
            QVERIFY(m_manager->findDevice(kUid)->isOnline());
            QCOMPARE(m_manager->groups().first()->name(), Adder::nameFor(codeOf()));
            QVERIFY(m_files.read("BINDCAM1").contains("<deviceId>1<"));
            Adder again(codeOf());
            QCOMPARE(outcomeOf(again), int(Adder::kExists));
            // A wrong code costs the camera that is bound nothing.
            Adder other(codeOf("other"));
            QCOMPARE(outcomeOf(other), int(Adder::kFailed));
            QCOMPARE(other.failure(), DeviceState::kWrongPassword);
            QVERIFY(m_manager->findDevice(kUid)->isOnline());
            QTRY_COMPARE(camera.clients(), 1);
        }
    }

    void changedPassword_isReplaced_onceItProvedRight() {
        auto camera = std::make_unique<TestCamera>(kUid);
        QVERIFY(camera->start());
        Adder first(codeOf());
        QCOMPARE(outcomeOf(first), int(Adder::kAdded));
        auto* device = qobject_cast<KvTUTKDevice*>(m_manager->findDevice(kUid));
        device->setName(QStringLiteral("Gate"));
        auto pair = std::make_unique<KvDeviceGroup>(device);
        pair->setType(KvDeviceGroup::kGroup);
        pair->setName(QStringLiteral("pair"));
        QVERIFY(m_manager->addGroup(std::move(pair)));
        const QList<KvDeviceGroup*> entries = m_manager->groups();

        camera = std::make_unique<TestCamera>(kUid, "changed");
        QVERIFY(camera->start());
        QTRY_COMPARE(device->state(), DeviceState::kWrongPassword);
        const std::tuple<const char*, int, DeviceState, const char*> attempts[] = {
            {"guessed", Adder::kFailed, DeviceState::kWrongPassword, "<password>right<"},
            {"right", Adder::kExists, DeviceState::kNeverTried, "<password>right<"},
            {"changed", Adder::kChanged, DeviceState::kNeverTried, "<password>changed<"},
        };
        for (const auto& [password, status, failure, stored] : attempts) {
            Adder adder(codeOf(password));
            QCOMPARE(outcomeOf(adder), status);
            QCOMPARE(adder.failure(), failure);
            m_manager->finishWrites();
            QVERIFY2(m_files.read("BINDCAM1").contains(stored), password);
        }
        QTRY_VERIFY(device->isOnline());
        QVERIFY(m_manager->findDevice(kUid) == device && m_manager->groups() == entries);
        QCOMPARE(device->name(), QStringLiteral("Gate"));
        QVERIFY(m_files.read("BINDCAM1").contains("<name>Gate<"));
        QTRY_COMPARE(camera->clients(), 1);

        // With a session that is open, the new password waits for the next one.
        const int sid = device->sid();
        device->changePassword(QStringLiteral("next"));
        QVERIFY(device->isOnline() && device->sid() == sid);
    }

    void groupOfTheSameName_makesRoom() {
        const QString uid = QStringLiteral("1");
        auto group = std::make_unique<KvDeviceGroup>();
        group->setType(KvDeviceGroup::kGroup);
        group->setName(QStringLiteral("first"));
        QVERIFY(m_manager->addGroup(std::move(group)));
        QCOMPARE(m_manager->groups().first()->key(), uid);
        TestCamera camera(uid);
        QVERIFY(camera.start());
        Adder adder(QString::fromStdString(orvelle::encodeDeviceCode(uid.toStdString(), "right")));
        QCOMPARE(outcomeOf(adder), int(Adder::kAdded));
        m_manager->finishWrites();
        QVERIFY(m_entries.read("1").contains("<uid>1<") && m_entries.read("2").contains(">first<"));
    }

    void codes_areTriedOnceTheCameraListensAgain_afterTooManyWrongOnes() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        // The eighth makes the camera deaf for eight seconds, longer than the next two attempts
        // look for others that answer; each but the first five waits, too.
        for (int i = 0; i < 8; ++i) {
            Adder guess(codeOf("wrong"));
            guess.setPatience({50, 20000});
            QCOMPARE(outcomeOf(guess), int(Adder::kFailed));
            QCOMPARE(guess.failure(), DeviceState::kWrongPassword);
        }
        Adder impatient(codeOf());
        impatient.setPatience({1, 0});
        QCOMPARE(outcomeOf(impatient), int(Adder::kFailed));
        QCOMPARE(impatient.failure(), DeviceState::kRefusedForNow);
        Adder adder(codeOf());
        adder.setPatience({50, 20000});
        const QSignalSpy waiting(&adder, &Adder::waitingSignal);
        QCOMPARE(outcomeOf(adder), int(Adder::kAdded));
        QVERIFY(!waiting.isEmpty());
    }

    void camera_isNotBound_whenItCannotBeSaved() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        QVERIFY(KvFileUtils::mkdir(m_entries.path("BINDCAM1")));
        Adder adder(codeOf());
        QCOMPARE(outcomeOf(adder), int(Adder::kNotSaved));
        QVERIFY(m_manager->devicesSnapshot().isEmpty() && !m_files.has("BINDCAM1"));
        QTRY_COMPARE(camera.clients(), 0);
    }

    void cancelledAttempt_leavesNothing_andTheRoundsGoOn() {
        orvelle::test::hangAttemptsOn({QStringLiteral("KNOWN1")});
        m_manager->addDevice(orvelle::test::deviceFor(QStringLiteral("KNOWN1")));
        const KvDevice* known = m_manager->findDevice(QStringLiteral("KNOWN1"));
        QTRY_COMPARE(known->state(), DeviceState::kConnecting);
        auto adder = std::make_unique<Adder>(codeOf());
        adder->start();
        QTRY_COMPARE(known->state(), DeviceState::kCancelled);
        m_manager->reaper().take(std::move(adder));
        QTRY_VERIFY(m_manager->reaper().isEmpty());
        QTRY_COMPARE(known->state(), DeviceState::kConnecting);
        QVERIFY(m_manager->groups().isEmpty() && !m_files.has("BINDCAM1"));
    }

    void lateSuccess_changesNothing_onceTheProgramIsOnItsWayOut() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        const QSignalSpy changes(m_manager, &KvDeviceManager::listChanged);
        {
            Adder adder(codeOf());
            adder.start();
            adder.waitForEnd();
            QVERIFY(m_files.has("BINDCAM1"));
            std::thread wayOut([this] { m_manager->closeForGood(); });
            wayOut.join();
        }
        // The next start lists it.
        QVERIFY(m_manager->devicesSnapshot().isEmpty() && m_manager->groups().isEmpty());
        QVERIFY(changes.isEmpty() && m_entries.has("BINDCAM1"));
        QTRY_COMPARE(camera.clients(), 0);
    }

    void worker_isWaitedFor_whenTheManagerGoes() {
        struct Slow : KvThread {
            explicit Slow(std::atomic<bool>& end) : KvThread(QStringLiteral("slow")), m_end(end) {}
            void run() override {
                sleepUnlessStopped(30000);
                msleep(50);
                m_end = true;
            }
            std::atomic<bool>& m_end;
        };
        std::atomic<bool> hasEnded{false};
        auto worker = std::make_unique<Slow>(hasEnded);
        worker->start();
        m_manager->reaper().take(std::move(worker), this);
        KvDeviceManager::release();
        QVERIFY(hasEnded);
    }

    void success_countsEvenWhenNobodyWaits_andRemovalUndoesIt() {
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        {
            Adder adder(codeOf());
            adder.start();
            adder.waitForEnd();
            QVERIFY(m_manager->groups().isEmpty());
        }
        KvDevice* device = m_manager->findDevice(kUid);
        QVERIFY(device);
        auto pair = std::make_unique<KvDeviceGroup>(device);
        pair->setType(KvDeviceGroup::kGroup);
        pair->setName(QStringLiteral("pair"));
        KvDeviceGroup* group = pair.get();
        QVERIFY(m_manager->addGroup(std::move(pair)));
        for (KvDeviceGroup* entry : {m_manager->findDeviceGroup(device), group}) {
            KvTUTKDeviceRemoveThread remover(entry);
            QSignalSpy spy(&remover, &KvTUTKDeviceRemoveThread::endedSignal);
            remover.start();
            QVERIFY(spy.wait(30000));
            QTRY_COMPARE(camera.clients(), 0);
            QVERIFY(!m_files.has("BINDCAM1") && !m_entries.has("BINDCAM1"));
            QCOMPARE(m_manager->groups().contains(group), entry != group);
            QVERIFY(entry == group || !group->firstDevice());
        }
        QVERIFY(!m_entries.has("1"));
    }

private:
    KvDeviceManager* m_manager = nullptr;
    const orvelle::test::XmlFiles m_files{QStringLiteral("KvTUTK")};
    const orvelle::test::XmlFiles m_entries{QStringLiteral("KvTUTKGroup")};
};

const orvelle::test::RegisterSuite<BindingTest> kRegistered;

}  // namespace

#include "binding_test.moc"
