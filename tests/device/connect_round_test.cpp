#include "device/device_manager.h"

#include "impostor.h"
#include "link/result_codes.h"
#include "support/no_more_files.h"
#include "support/suites.h"
#include "support/test_camera.h"
#include "test_tools.h"

using orvelle::DeviceState;
using orvelle::test::deviceFor;
using orvelle::test::Impostor;
using orvelle::test::TestCamera;

namespace {

constexpr int kHourMs = 3600 * 1000;
constexpr int kDeadlineMs = 30'000;
const QString kUid = QStringLiteral("ROUNDCAM1");

QStringList numbered(const char* name, int count) {
    QStringList uids;
    for (int i = 0; i < count; ++i)
        uids << QStringLiteral("%1%2").arg(QLatin1String(name)).arg(i);
    return uids;
}

class ConnectRoundTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        m_manager = KvDeviceManager::create();
        // One round only, unless a session breaks.
        m_manager->setTiming({kHourMs, 20, kHourMs});
    }
    void cleanup() {
        KvDeviceManager::release();
        qunsetenv("ORVELLE_LINK_UNBOUNDED");
        qunsetenv("ORVELLE_CAMERA_ADDRESSES");
    }

    void network_isAskedOnceForAll_andOnlyWhoAnswersIsTried() {
        const QStringList off = numbered("OFF", 31);
        const Impostor listening({});
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        for (const QString& uid : off + QStringList(kUid))
            m_manager->addDevice(deviceFor(uid));
        m_manager->start({});
        QTRY_VERIFY_WITH_TIMEOUT(device(kUid).isOnline(), kDeadlineMs);
        for (const QString& uid : off) {
            QTRY_COMPARE_WITH_TIMEOUT(device(uid).state(), DeviceState::kUnreachable, kDeadlineMs);
            QCOMPARE(device(uid).lastResult(), int(LINK_ER_NOT_FOUND));
        }
        QVERIFY(device(kUid).isOnline());
        QCOMPARE(listening.askedFor(), std::set<std::string>{kUid.toStdString()});
    }

    void attemptsThatHang_holdUpNobody_andAreAborted() {
        const QStringList hanging = numbered("HANGS", 31);
        orvelle::test::hangAttemptsOn(hanging);
        TestCamera camera(kUid);
        for (const QString& uid : hanging + QStringList(kUid)) {
            auto listed = deviceFor(uid);
            listed->setTiming({kHourMs, kHourMs});
            m_manager->addDevice(std::move(listed));
        }
        m_manager->setTiming({20, 20, 0});
        m_manager->start({});
        // Also one that comes later.
        QTRY_COMPARE_WITH_TIMEOUT(device(kUid).state(), DeviceState::kUnreachable, kDeadlineMs);
        QVERIFY(camera.start());
        QTRY_VERIFY_WITH_TIMEOUT(device(kUid).isOnline(), kDeadlineMs);
        for (const QString& uid : hanging)
            QCOMPARE(device(uid).state(), DeviceState::kConnecting);

        // One may go while it is being connected, and the others do not notice.
        const auto removed = m_manager->removeDevice(m_manager->findDevice(hanging[7]));
        QVERIFY(removed && removed->state() == DeviceState::kCancelled);
        QCOMPARE(device(hanging[8]).state(), DeviceState::kConnecting);
        m_manager->stopInitThread();
        QCOMPARE(device(hanging[8]).state(), DeviceState::kCancelled);
        QVERIFY(device(kUid).isOnline());
    }

    void camerasThatSayNothing_areGivenUp_afterTheOtherIsConnected() {
        const QStringList mute = numbered("MUTE", 4);
        const Impostor peer(mute + QStringList(kUid));
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        for (const QString& uid : mute + QStringList(kUid))
            m_manager->addDevice(deviceFor(uid));
        m_manager->start({});
        // Somebody else answers to its UID as well.
        QTRY_VERIFY_WITH_TIMEOUT(device(kUid).isOnline(), kDeadlineMs);
        for (const QString& uid : mute)
            QTRY_COMPARE_WITH_TIMEOUT(device(uid).lastResult(), int(AV_ER_TIMEOUT), kDeadlineMs);
        QVERIFY(peer.logins() >= size_t(mute.size()));
    }

    void refusal_isNotAskedForAgain_inTheSameRound() {
        const Impostor impostor({kUid}, AV_ER_NO_PERMISSION);
        m_manager->addDevice(deviceFor(kUid));
        m_manager->addDevice(deviceFor(QStringLiteral("OFF")));
        m_manager->start({});
        QTRY_COMPARE_WITH_TIMEOUT(device(kUid).lastResult(), int(AV_ER_NO_PERMISSION), kDeadlineMs);
        // The silent one keeps the search going, which the other goes on to answer.
        QTRY_COMPARE_WITH_TIMEOUT(device(QStringLiteral("OFF")).state(), DeviceState::kUnreachable,
                                  kDeadlineMs);
        m_manager->stopInitThread();
        QCOMPARE(impostor.logins(), size_t(1));
    }

    void cameraThatDropped_isSoughtAgainSoon_evenWhenItStaysAwayForLonger() {
        TestCamera camera(kUid);
        m_manager->addDevice(deviceFor(kUid));
        QVERIFY(camera.start());
        m_manager->start({});
        for (int round = 0; round < 2; ++round) {
            QTRY_VERIFY_WITH_TIMEOUT(device(kUid).isOnline(), kDeadlineMs);
            camera.stop();
            // A whole search went by, and what was left of the session is closed.
            QTRY_COMPARE_WITH_TIMEOUT(device(kUid).state(), DeviceState::kUnreachable, kDeadlineMs);
            QVERIFY(!device(kUid).isConnected());
            QVERIFY(camera.start());
        }
        QTRY_VERIFY_WITH_TIMEOUT(device(kUid).isOnline(), kDeadlineMs);
    }

    void camerasBeyondTheLinksChannels_sayWhy_andTheFirstOfThemFollows() {
        m_manager->setTiming({20, 20, 0});
        for (const QString& uid : numbered("OFF", KvDeviceManager::kMaxDevices))
            m_manager->addDevice(deviceFor(uid));
        TestCamera camera(kUid);
        QVERIFY(camera.start());
        m_manager->addDevice(deviceFor(kUid));
        m_manager->start({});
        QTRY_COMPARE_WITH_TIMEOUT(device(QStringLiteral("OFF0")).state(), DeviceState::kUnreachable,
                                  kDeadlineMs);
        QCOMPARE(device(kUid).state(), DeviceState::kNoFreeChannel);
        m_manager->removeDevice(m_manager->findDevice(QStringLiteral("OFF7"))).reset();
        QTRY_VERIFY_WITH_TIMEOUT(device(kUid).isOnline(), kDeadlineMs);
    }

    void linkWithoutSockets_isTold_andTriedAgain() {
        if (!orvelle::test::NoMoreFiles::isPossible())
            QSKIP("no limit on the number of files");
        m_manager->setTiming({20, 20, 0});
        TestCamera camera(kUid);
        m_manager->addDevice(deviceFor(QStringLiteral("OFF")));
        m_manager->start({});
        QTRY_COMPARE_WITH_TIMEOUT(device(QStringLiteral("OFF")).state(), DeviceState::kUnreachable,
                                  kDeadlineMs);
        {
            // The threads that run have what they need.
            const orvelle::test::NoMoreFiles none;
            m_manager->addDevice(deviceFor(kUid));
            QTRY_COMPARE_WITH_TIMEOUT(m_manager->linkResult(), int(LINK_ER_NO_SOCKET), kDeadlineMs);
            QTRY_COMPARE_WITH_TIMEOUT(device(kUid).state(), DeviceState::kNoNetwork, kDeadlineMs);
        }
        QVERIFY(camera.start());
        QTRY_VERIFY_WITH_TIMEOUT(device(kUid).isOnline(), kDeadlineMs);
        QTRY_COMPARE_WITH_TIMEOUT(m_manager->linkResult(), 0, kDeadlineMs);
    }

    void camera_mayGo_whileItIsSought() {
        const QStringList off = numbered("OFF", 2);
        for (const QString& uid : off)
            m_manager->addDevice(deviceFor(uid));
        m_manager->start({});
        m_manager->removeDevice(m_manager->findDevice(off[0])).reset();
        QTRY_COMPARE_WITH_TIMEOUT(device(off[1]).state(), DeviceState::kUnreachable, kDeadlineMs);
    }

private:
    const KvDevice& device(const QString& uid) const { return *m_manager->findDevice(uid); }

    KvDeviceManager* m_manager = nullptr;
};

const orvelle::test::RegisterSuite<ConnectRoundTest> kRegistered;

}  // namespace

#include "connect_round_test.moc"
