#include "raw_camera.h"
#include "support/udp_relay.h"

namespace orvelle::test {

/// Finding a camera, logging in, and every way in which that fails or is cut short.
class LoginTest : public LinkSuite {
    Q_OBJECT

private slots:
    void login_givesCause_forEachOutcome_data();
    void login_givesCause_forEachOutcome();
    void find_meetsDeadline_whenHostIsSilent();
    void find_isAborted_whenStopCameFirst();
    void unboundedFind_returns_whenAborted();
    void unboundedLogin_returns_whenAborted_data();
    void unboundedLogin_returns_whenAborted();
    void login_isRefused_whenCameraIsFull();
    void handles_areRefused_whenUnknownOrExhausted();
    void lanSearch_findsEveryCamera_onOneHost();
    void cycles_leaveNothing_afterTen();
};

void LoginTest::login_givesCause_forEachOutcome_data() {
    QTest::addColumn<QByteArray>("uid");
    QTest::addColumn<bool>("isConfigured");
    QTest::addColumn<QByteArray>("account");
    QTest::addColumn<QByteArray>("password");
    QTest::addColumn<int>("found");
    QTest::addColumn<int>("result");
    const auto row = [](const char* name, bool isConfigured, int found, int result,
                        const QByteArray& uid = kUid, const QByteArray& password = kPassword,
                        const QByteArray& account = "admin") {
        QTest::newRow(name) << uid << isConfigured << account << password << found << result;
    };
    row("by address", true, 0, 0);
    row("by search", false, 0, 0);
    row("password", true, 0, AV_ER_WRONG_VIEWACCorPWD, kUid, "Correct horse");
    row("no password", true, 0, AV_ER_WRONG_VIEWACCorPWD, kUid, "");
    row("account", true, 0, AV_ER_WRONG_VIEWACCorPWD, kUid, kPassword, "root");
    row("uid", true, LINK_ER_UNKNOWN_UID, 0, "TESTCAMERA0000000000");
    row("bad uid", true, LINK_ER_BAD_UID, 0, "../etc/passwd");
    row("long uid", true, LINK_ER_BAD_UID, 0, QByteArray(kUid) + '0');
}

void LoginTest::login_givesCause_forEachOutcome() {
    QFETCH(QByteArray, uid);
    QFETCH(bool, isConfigured);
    QFETCH(QByteArray, account);
    QFETCH(QByteArray, password);
    QFETCH(int, found);
    QFETCH(int, result);

    TestCamera camera;
    std::optional<AddressOverride> address;
    if (isConfigured)
        address.emplace(uid, camera.server().port());
    TestClient client;
    QCOMPARE(client.find(uid), found < 0 ? found : client.sid());
    LinkSessionInfo info;
    QCOMPARE(IOTC_Session_Check(client.sid(), &info), found < 0 ? int{IOTC_ER_INVALID_SID} : 0);
    if (found < 0)
        return;
    QCOMPARE(QByteArray(info.uid), uid);
    QCOMPARE(info.remotePort, camera.server().port());
    QCOMPARE(std::min(client.logIn(password, 10, account), 0), result);
    QCOMPARE(camera.connected(), result == 0 ? 1 : 0);
    QCOMPARE(camera.server().isChannelOpen(camera.lastClient(), 0), result == 0);
}

void LoginTest::find_meetsDeadline_whenHostIsSilent() {
    TestCamera camera;
    UdpRelay relay(camera.server().port());
    const AddressOverride address("SILENT", relay.port());
    relay.setSilent(true);
    TestClient client;
    QCOMPARE(client.find("SILENT"), int{LINK_ER_NOT_FOUND});
    QVERIFY(relay.droppedDatagrams(RelayDirection::ToCamera) > 0);
}

void LoginTest::find_isAborted_whenStopCameFirst() {
    TestCamera camera;
    TestClient client;
    QCOMPARE(IOTC_Connect_Stop_BySID(client.sid()), 0);
    QCOMPARE(client.find(), int{LINK_ER_ABORTED});
    QCOMPARE(TestClient().connect() >= 0, true);
}

// The link's own time-outs are lifted, so only the abort can end these.
void LoginTest::unboundedFind_returns_whenAborted() {
    qputenv("ORVELLE_LINK_UNBOUNDED", "1");
    UdpRelay relay(9);
    relay.setSilent(true);
    const AddressOverride address("NOBODY", relay.port());
    TestClient client;
    std::atomic<int> result{0};
    std::thread finder([&] { result = client.find("NOBODY"); });
    QTRY_VERIFY(relay.droppedDatagrams(RelayDirection::ToCamera) > 0);
    QCOMPARE(result.load(), 0);
    IOTC_Connect_Stop_BySID(client.sid());
    finder.join();
    qunsetenv("ORVELLE_LINK_UNBOUNDED");
    QCOMPARE(result.load(), int{LINK_ER_ABORTED});
}

void LoginTest::unboundedLogin_returns_whenAborted_data() {
    QTest::addColumn<bool>("isSticky");
    QTest::newRow("by session") << true;
    QTest::newRow("by exit") << false;
}

// The peer takes the connection and never says a word.
void LoginTest::unboundedLogin_returns_whenAborted() {
    QFETCH(bool, isSticky);
    RawCamera camera;
    const AddressOverride address(kUid, camera.port());
    TestClient client;
    QCOMPARE(client.find(), client.sid());
    std::atomic<int> result{0};
    std::thread login([&] { result = client.logIn(kPassword, 0); });
    QVERIFY(camera.acceptLogin());
    QCOMPARE(result.load(), 0);
    if (isSticky)
        IOTC_Connect_Stop_BySID(client.sid());
    else
        avClientExit(client.sid(), 0xFF);
    login.join();
    QCOMPARE(result.load(), int{LINK_ER_ABORTED});
    QCOMPARE(client.logIn(kPassword, 1), isSticky ? int{LINK_ER_ABORTED} : int{AV_ER_TIMEOUT});
}

void LoginTest::login_isRefused_whenCameraIsFull() {
    TestCamera camera;
    std::vector<std::unique_ptr<TestClient>> clients;
    for (int i = 0; i < kMaxLinkClients; ++i) {
        clients.push_back(std::make_unique<TestClient>());
        QVERIFY(clients.back()->connect() >= 0);
    }
    QCOMPARE(TestClient().connect(), int{AV_ER_NO_PERMISSION});
    clients.pop_back();
    QTRY_COMPARE(camera.server().stats().clients, kMaxLinkClients - 1);
    QVERIFY(TestClient().connect() >= 0);
}

void LoginTest::handles_areRefused_whenUnknownOrExhausted() {
    TestCamera camera;
    TestClient client;
    QCOMPARE(client.logIn(), int{IOTC_ER_INVALID_SID});  // not yet found
    QVERIFY(client.connect() >= 0);
    QCOMPARE(avClientStart2(client.sid(), "admin", kPassword, 1, nullptr, 0, nullptr),
             int{LINK_ER_CHANNEL_IN_USE});
    QCOMPARE(avClientStart2(client.sid(), "admin", kPassword, 1, nullptr, 32, nullptr),
             int{AV_ER_INVALID_ARG});
    const int av = client.av();
    client.close();
    QCOMPARE(IOTC_Connect_ByUID_Parallel(kUid, client.sid()), int{IOTC_ER_INVALID_SID});
    QCOMPARE(avSendIOCtrl(av, 1, "", 0), int{AV_ER_INVALID_ARG});
    QCOMPARE(avCheckAudioBuf(av), int{AV_ER_INVALID_ARG});

    std::vector<std::unique_ptr<TestClient>> sessions;
    while (sessions.size() < kMaxLinkSessions)
        sessions.push_back(std::make_unique<TestClient>());
    QCOMPARE(IOTC_Get_SessionID(), int{LINK_ER_NO_FREE_SESSION});
}

void LoginTest::lanSearch_findsEveryCamera_onOneHost() {
    TestCamera first("FIRST"), second("SECOND");
    LanSearchRecord records[8];
    const int count = IOTC_Lan_Search2(records, 8, 500);
    QCOMPARE(count, 2);
    QMap<QByteArray, int> ports;
    for (int i = 0; i < count; ++i) {
        ports[records[i].uid] = records[i].port;
        QCOMPARE(records[i].deviceName, "Test camera");
        QCOMPARE(records[i].ip, "127.0.0.1");
    }
    QCOMPARE(ports["FIRST"], int{first.server().port()});
    QCOMPARE(ports["SECOND"], int{second.server().port()});
    QCOMPARE(IOTC_Lan_Search2(records, 1, 500), 1);
}

void LoginTest::cycles_leaveNothing_afterTen() {
    TestCamera camera;
    QVERIFY(TestClient().connect() >= 0);
    const LeakCheck leaks;
    for (int i = 0; i < 10; ++i) {
        TestClient client;
        QVERIFY(client.connect() >= 0);
        QCOMPARE(avSendIOCtrl(client.av(), 0x680, "12345678", 8), 0);
    }
    QTRY_COMPARE(camera.orderlyGone(), 11);
    QCOMPARE(camera.server().stats().clients, 0);
    QCOMPARE(camera.controls().size(), 10);
    QCOMPARE(leaks.leftovers(), 0);
}

static const RegisterSuite<LoginTest> kRegisterLogin;

}  // namespace orvelle::test

#include "login_test.moc"
